// What the lines of a listing tell.
#include <operation/Entries.h>

#include <gtest/gtest.h>

namespace {

using session::entryOfFacts;
using session::entryOfLongLine;

std::string textOf(const std::optional<RemoteEntry>& entry)
{
    if (!entry) {
        return "none";
    }
    const char* const kind = entry->kind == EntryKind::File        ? "file"
                             : entry->kind == EntryKind::Directory ? "directory"
                                                                   : "other";
    const std::string time =
        entry->modified
            ? std::to_string(std::chrono::floor<std::chrono::seconds>(*entry->modified).time_since_epoch().count())
            : "unknown";
    return "<" + entry->name + "> " + kind + " " + std::to_string(entry->size) + " " + time;
}

struct Case
{
    const char* line;
    const char* entry;
};

} // namespace

// A Turkish host's.
extern "C" int tolower(int letter) noexcept
{
    const bool isUpper = letter >= 'A' && letter <= 'Z';
    return letter == 'I' ? 0xfd : isUpper ? letter + ('a' - 'A') : letter;
}

TEST(Entries, OfFacts)
{
    const Case cases[] = {
        {"type=file;size=5;modify=20260101000000; a b\r\n", "<a b> file 5 1767225600"},
        {"Type=File;Size=5;Modify=20260101000000.123; a", "<a> file 5 1767225600"},
        {"type=dir;size=4096;modify=20260101000000;UNIX.mode=0755; d", "<d> directory -1 1767225600"},
        {"type=OS.unix=slink:/x;size=5; l", "<l> other -1 unknown"},
        {"type=OS.unix=slink:/x y;size=5; l", "<l> other -1 unknown"},
        {"type=file;UNIX.groupname=domain users;size=5; a; b", "<a; b> file 5 unknown"},
        {"size=9223372036854775807;type=file; big", "<big> file 9223372036854775807 unknown"},
        {"type=file;size=9223372036854775808; beyond", "<beyond> file -1 unknown"},
        {"type=file;size=-1; negative", "<negative> file -1 unknown"},
        {"type=file;modify=20261301000000; month", "<month> file -1 unknown"},
        {"type=file;modify=20260101240000; hour", "<hour> file -1 unknown"},
        {"type=file;modify=20400229235959; beyond 32 bits", "<beyond 32 bits> file -1 2214172799"},
        {"type=file;modify=19000228000000; before them", "<before them> file -1 -2203977600"},
        {"type=file;modify=99991231235959; beyond the clock", "<beyond the clock> file -1 unknown"},
        {"type=file;modify=00000101000000; before the clock", "<before the clock> file -1 unknown"},
        {"type=file;modify=2026010100000; short", "<short> file -1 unknown"},
        {"type=file;modify=20260101000000x; behind", "<behind> file -1 unknown"},
        {"type=file;size; without a value", "<without a value> file -1 unknown"},
        {" no facts at all", "<no facts at all> other -1 unknown"},
        {"type=file;  two blanks", "< two blanks> file -1 unknown"},
        {"type=cdir; .", "none"},
        {"type=pdir; /above", "none"},
        {"type=dir; ..", "none"},
        {"type=file;size=5;", "none"},
        {"type=file;size=5 a", "none"},
        {"type=file; ", "none"},
        {"", "none"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(each.entry, textOf(entryOfFacts(each.line))) << each.line;
    }
}

TEST(Entries, OfLongLines)
{
    const Case cases[] = {
        {"-rw-r--r--    1 1000     1000            5 Jan 01 00:00 a b\r\n", "<a b> file 5 unknown"},
        {"-rw-r--r-- 1 backup backup 5 Jan  1  2025  two blanks", "< two blanks> file 5 unknown"},
        {"-rw-r--r--+ 1 backup backup 5 Jan  1  2025 acl", "<acl> file 5 unknown"},
        {"-rw-r--r-- 1 backup domain users 5 Jan 01 00:00 a 7 b c d", "<a 7 b c d> file 5 unknown"},
        {"drwxr-x--- 2 CORP\\back up CORP\\domain users 4096 Jan  1  2025 d", "<d> directory -1 unknown"},
        {"-rw-r--r-- 1 John Doe domain users 5 Jan  1  2025 a 6 Jan", "<a 6 Jan> file 5 unknown"},
        {"-rw-r--r-- 1 backup 5 Jan  1  2025 no group", "<no group> file 5 unknown"},
        {"drwxr-xr-x 2 backup backup 4096 Jan 01 00:00 d", "<d> directory -1 unknown"},
        {"lrwxrwxrwx 1 backup backup 3 Jan 01 00:00 l -> a", "<l> other -1 unknown"},
        {"lrwxrwxrwx 1 backup backup 3 Jan 01 00:00  -> a", "none"},
        {"crw-rw-rw- 1 root root 1, 3 Jan 01 00:00 null", "<null> other -1 unknown"},
        {"-rw-r--r-- 1 backup backup 9223372036854775808 Jan 01 00:00 beyond", "none"},
        {"-rw-r--r-- 1 backup backup 9223372036854775808 Jan 01 00:00 beyond with words", "none"},
        {"-rw-r--r-- 1 backup backup of many words", "none"},
        {"drwxr-xr-x 2 backup backup 4096 Jan 01 00:00 .", "none"},
        {"drwxr-xr-x 2 backup backup 4096 Jan 01 00:00 ..", "none"},
        {"-rw-r--r-- 1 backup backup 5 2026-01-01 12:00 a b", "none"},
        {"-rw-r--r-- 1 backup backup 5 2026-01-01 12:00 1 b", "none"},
        {"-rw-r--r-- 1 backup backup 5 01 Jan a b", "none"},
        {"total 12", "none"},
        {"-rw-r--r-- 1 backup backup 5 Jan 01", "none"},
        {"-rw-r--r-- 1 backup backup 5 Jan 01 00:00", "none"},
        {"-rw-r--r-- 1 backup backup 5 Jan 01 00:00 ", "none"},
        {"01-01-26  12:00AM       <DIR>          d", "none"},
        {"", "none"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(each.entry, textOf(entryOfLongLine(each.line))) << each.line;
    }
}

TEST(Entries, LeadNowhereElse)
{
    for (const std::string name : {"a", "a b", "..", "\x1b[2J", "a\\b"}) {
        EXPECT_TRUE(session::leadsNowhereElse(name)) << name;
    }
    for (const std::string& name :
         {std::string("/"), std::string("../a"), std::string("a/b"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(session::leadsNowhereElse(name)) << name;
    }
}

TEST(Entries, OfFactsAreReadAlikeInTheLanguageOfEachHost)
{
    EXPECT_EQ("<a> file 5 1767225600", textOf(entryOfFacts("TYPE=FILE;SIZE=5;MODIFY=20260101000000; a")));
}
