// The part of the grammar below a script: replies and contents.
#include "harness/Grammar.h"

#include <functional>

namespace grammar {

namespace {

using Words = std::vector<std::string>;

std::string digits(Dice& dice)
{
    static const Words numbers = {"0",
                                  "1",
                                  "5",
                                  "3000",
                                  "65535",
                                  "65536",
                                  "2147483648",
                                  "4294967296",
                                  "9223372036854775807",
                                  "9223372036854775808",
                                  "-1",
                                  "007",
                                  "0x10",
                                  "99999999999999999999",
                                  "",
                                  "5 bytes"};
    return dice.among(numbers);
}

std::string text(Dice& dice)
{
    static const Words texts = {"done",
                                "",
                                " ",
                                "\"",
                                "%s%n",
                                "password",
                                "user",
                                "\t",
                                "\x1b[",
                                "\xc3\xa4",
                                "\xff\xfe",
                                "230 in",
                                "(|||@|)",
                                "(127,0,0,1,#)",
                                "a: b",
                                ":",
                                "Server:",
                                "a.bak",
                                "old.bak: no such file"};
    switch (dice.below(12)) {
    case 0:
        return std::string(dice.below(1200), 'x');
    case 1:
        return dice.bytes(dice.below(30));
    case 2:
        return std::string("a\0b", 3);
    default:
        return dice.among(texts);
    }
}

std::string code(Dice& dice)
{
    static const Words usual = {"110", "120", "125", "150", "200", "202", "211", "213", "220", "221", "226",
                                "227", "229", "230", "232", "234", "250", "257", "331", "332", "334", "350",
                                "421", "425", "426", "430", "450", "451", "452", "500", "501", "502", "503",
                                "504", "522", "530", "532", "534", "550", "551", "552", "553", "631"};
    static const Words odd = {"000", "099", "600", "999", "2", "22", "2200", "2x0", "-50", "", " 22"};
    return dice.among(dice.onceIn(10) ? odd : usual);
}

std::string lineEnd(Dice& dice)
{
    static const Words odd = {"\n", "\r", "", "\r\r\n", "\n\r", std::string("\0\r\n", 3)};
    return dice.onceIn(12) ? dice.among(odd) : "\r\n";
}

std::string plain(Dice& dice) { return code(dice) + (dice.onceIn(12) ? "" : " ") + text(dice) + lineEnd(dice); }

std::string ofManyLines(Dice& dice)
{
    const std::string own = code(dice);
    std::string lines = own + "-" + text(dice) + lineEnd(dice);
    for (std::size_t left = dice.below(6); left > 0; --left) {
        static const Words beginnings = {" ", "", "220 ", "220-"};
        lines += (dice.onceIn(3) ? own + "-" : dice.among(beginnings)) + text(dice) + lineEnd(dice);
    }
    return lines + (dice.onceIn(8) ? "" : (dice.onceIn(8) ? code(dice) : own) + " end" + lineEnd(dice));
}

std::string passive(Dice& dice)
{
    static const Words replies = {"229 (|||@|)",
                                  "229 (!!!@!)",
                                  "229 (|1|127.0.0.1|@|)",
                                  "229 (|||0|)",
                                  "229 (|||65536|)",
                                  "229 (|||-1|)",
                                  "229 (||||)",
                                  "229 (|||@",
                                  "229 @",
                                  "229 (|||2021|)",
                                  "500 no",
                                  "227 (127,0,0,1,#)",
                                  "227 here 127,0,0,1,#",
                                  "227 =127,0,0,1,#",
                                  "227 (10,0,0,1,#)",
                                  "227 (127,0,0,1,0,0)",
                                  "227 (127,0,0,1,256,1)",
                                  "227 (999,0,0,1,#)",
                                  "227 (127,0,0,1)",
                                  "227 (1,2,3,4,5,6,7,8)",
                                  "228 here"};
    return dice.among(replies) + lineEnd(dice);
}

std::string place(Dice& dice)
{
    static const Words replies = {"257 \"/\"",           "257 \"/home/user\"", "257 \"/with \"\"quotes\"\"\"",
                                  "257 \"/no end",       "257 /no quotes",     "257 \"\"",
                                  "257 \"C:\\\"",        "257 \"'A.B'\"",      "257 \"relative\"",
                                  "257 \"/\x1b[\" here", "550 nowhere"};
    return dice.among(replies) + (dice.onceIn(10) ? std::string(dice.below(900), '/') : "") + lineEnd(dice);
}

std::string size(Dice& dice) { return "213 " + digits(dice) + lineEnd(dice); }

std::string time(Dice& dice)
{
    static const Words times = {"20260102030405", "20260102030405.678", "19700101000000", "20260230000000",
                                "20261332256199", "00000000000000",     "99991231235959", "19126010203",
                                "2026010203040",  "-2026010203040",     "tomorrow"};
    return "213 " + dice.among(times) + lineEnd(dice);
}

std::string features(Dice& dice)
{
    static const Words lines = {" MLST type*;size*;modify*;",
                                " MLST",
                                " mlst x",
                                "MLST",
                                " MDTM",
                                " MFMT",
                                " SIZE",
                                " REST STREAM",
                                " HASH SHA-256*;SHA-1",
                                " HASH SHA-1*;SHA-256",
                                " HASH MD5*",
                                " HASH ;;*",
                                " XSHA256",
                                " XCRC \"file\"",
                                " UTF8",
                                " TVFS",
                                " PROT",
                                "  MLST",
                                " "};
    std::string reply = "211-Features:\r\n";
    for (std::size_t left = dice.below(7); left > 0; --left) {
        reply += dice.among(lines) + lineEnd(dice);
    }
    return reply + "211 End\r\n";
}

std::string checksum(Dice& dice)
{
    static const Words beginnings = {"213 SHA-256 0-4 ", "213 sha-256 0-4 ", "213 SHA-1 0-4 ", "250 ", "250", "213  "};
    static const std::vector<std::size_t> lengths = {64, 64, 63, 65, 8, 7, 0};
    std::string reply = dice.among(beginnings);
    for (std::size_t left = dice.among(lengths); left > 0; --left) {
        reply += "0123456789abcdefABCDEFg"[dice.below(dice.onceIn(40) ? 23 : 22)];
    }
    return reply + (dice.onceIn(3) ? " a.bak" : "") + lineEnd(dice);
}

std::string factsLine(Dice& dice)
{
    static const Words facts = {"type=file;",
                                "type=dir;",
                                "type=cdir;",
                                "type=pdir;",
                                "type=OS.unix=slink:/x;",
                                "Type=FILE;",
                                "type=;",
                                "modify=20260102030405;",
                                "modify=20260102030405.999;",
                                "modify=99999999999999;",
                                "UNIX.mode=0644;",
                                "perm=r;",
                                "unique=1;",
                                "=;",
                                ";",
                                "size"};
    static const Words names = {" a.bak", " a b",  " .",   " ..",     " /etc/passwd", " ../x", " ",
                                "",       " \xff", " a;b", " x=y; z", " a\x1b[",      "a.bak"};
    std::string line;
    for (std::size_t left = dice.below(5); left > 0; --left) {
        line += dice.onceIn(3) ? "size=" + digits(dice) + ";" : dice.among(facts);
    }
    return line + dice.among(names);
}

std::string facts(Dice& dice)
{
    static const Words ends = {"250 End\r\n", "250 End\r\n", "250 End\r\n", "550 no\r\n", ""};
    return "250-Listing\r\n" + std::string(dice.onceIn(5) ? "" : " ") + factsLine(dice) + lineEnd(dice) +
           dice.among(ends);
}

// LIST's.
std::string longLine(Dice& dice)
{
    static const Words modes = {"-rw-r--r--", "drwxr-xr-x", "lrwxrwxrwx", "crw-rw-rw-", "-rw-r--r--+", "-", "total"};
    static const Words times = {"Jan  1 00:00", "Feb 30 2026",      "Dec 31 1999",
                                "Jan 1 24:60",  "2026-01-02 03:04", "Okt 1 2026"};
    static const Words names = {" a.bak", " a b", "  lead", " l -> x", " .",     " ..",
                                " ../x",  " a/b", "",       " \xff",   " a\x1b["};
    static const Words others = {"total 5",
                                 "01-02-26  03:04AM       <DIR> d",
                                 "01-02-26  03:04AM  5 a.bak",
                                 "+i8388621.48594,m825718503,r,s280,\ta",
                                 "a.bak",
                                 ""};
    if (dice.onceIn(5)) {
        return dice.among(others);
    }
    return dice.among(modes) + (dice.onceIn(8) ? " " : " 1 u g ") + digits(dice) + " " + dice.among(times) +
           dice.among(names);
}

std::string tls(Dice& dice)
{
    static const Words replies = {"234 go\r\n!", "234 go\r\n!", "234 go\r\n", "334 go on\r\n!",
                                  "220 go\r\n!", "!",           "234!",       "234 go\r\n230 in\r\n!"};
    return dice.among(replies);
}

std::string transfer(Dice& dice)
{
    static const Words replies = {"150 here\r\n",
                                  "125 here\r\n",
                                  "150 Opening a.bak (5 bytes)\r\n",
                                  "150 (99999999999 bytes)\r\n",
                                  "150 (-1 bytes)\r\n",
                                  "150 here\r\n226 done\r\n",
                                  "226 done\r\n",
                                  "250 done\r\n",
                                  "200 done\r\n",
                                  "425 no\r\n",
                                  "426 broke off\r\n",
                                  "550 none\r\n",
                                  "552 full\r\n",
                                  "350 there\r\n",
                                  "421 busy\r\n"};
    return dice.among(replies);
}

} // namespace

std::string reply(Dice& dice)
{
    static const std::vector<std::function<std::string(Dice&)>> kinds = {
        plain, plain, plain,    ofManyLines, passive, passive, place,    size,
        size,  time,  features, checksum,    facts,   tls,     transfer, transfer};
    if (dice.onceIn(40)) {
        return "%";
    }
    std::string made = dice.among(kinds)(dice);
    return dice.onceIn(12) && (made.empty() || made.back() != '!') ? made + plain(dice) : made;
}

std::string content(Dice& dice)
{
    std::string made = dice.onceIn(3) ? "!" : "";
    const std::size_t kind = dice.below(4);
    if (kind == 0) {
        return made + dice.bytes(dice.below(60));
    }
    for (std::size_t left = dice.below(6); left > 0; --left) {
        static const Words names = {"a.bak", "old.bak", "a b", "..", "dir/a.bak", "/abs", "", "\xff", "x\x1b[2J"};
        made += (kind == 1 ? factsLine(dice) : kind == 2 ? longLine(dice) : dice.among(names)) + lineEnd(dice);
    }
    return made;
}

} // namespace grammar
