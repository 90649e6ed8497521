// Listings and single entries, by facts and by commands.
#include "SessionTransfer.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

class SessionListing : public SessionTransfer
{
};

} // namespace

TEST_F(SessionListing, AListIsOfNamesWithoutTheTwoDots)
{
    content = ".\r\n..\r\na b\r\n.hidden\nlast";
    request.remotePath = "ftp://server/backup/";
    SFtpSession session;
    EXPECT_EQ(0, session.Listsftpdir(request, errorText));
    EXPECT_EQ("a b\n.hidden\nlast\n", contentOf(request.localPath));
}

TEST_F(SessionListing, EntriesComeByFactsWhereTheServerHasThem)
{
    request.remotePath = "ftp://server/backup/";
    content = "type=cdir; .\r\ntype=file;size=7;modify=20260102030405; a b\r\ntype=dir; d\r\n";
    features = {"MLST type*;size*;"};
    const Lines lines = wayOf("ListEntries");
    EXPECT_TRUE(hasLine("1 CUSTOMREQUEST = MLSD", lines));
    EXPECT_EQ("[a b file 7 at 1767323045][d directory -1]", lastGot());
    content = "total 2\r\n-rw-r--r--   1 user group 7 Jan  1 00:00 a b\r\n";
    for (const Lines& none : {Lines{}, Lines{"XMLST"}, Lines{"SIZE MLST"}}) {
        features = none;
        EXPECT_FALSE(hasLine("1 CUSTOMREQUEST = MLSD", wayOf("ListEntries")));
        EXPECT_EQ("[a b file 7]", lastGot());
    }
}

// A list without what cannot be read would be taken for the whole: a tree that is pulled with it would lack files.
TEST_F(SessionListing, AListingThatCannotBeReadIsAFailure)
{
    request.remotePath = "ftp://server/backup/";
    SFtpSession session;
    std::vector<RemoteEntry> entries;
    for (const char* const line : {"01-01-26  12:00AM       <DIR>          d\r\n", "-rw-r--r-- 1 user group 7\r\n"}) {
        content = std::string("-rw-r--r-- 1 user group 7 Jan  1 00:00 a\r\n") + line;
        EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ListEntries(request, entries, errorText)) << line;
        EXPECT_EQ(scripted::text(8) + ": a line of the listing is not in the format of \"ls -l\"", errorText);
    }
    const std::string dots =
        "drwxr-xr-x 2 user group 7 Jan  1 00:00 .\r\ndrwxr-xr-x 2 user group 7 Jan  1 00:00 ..\r\n";
    content = "total 2\r\n-rw-r--r-- 1 user group 7 Jan  1 00:00 half\r\nof a name\r\n" + dots;
    EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
    EXPECT_EQ(1U, entries.size());
    for (const char* const sum : {"", "total 0\r\n", "\r\n"}) {
        content = sum + dots;
        EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
        EXPECT_TRUE(entries.empty());
    }
    for (const char* const line : {"+i8388621.48594,m825718503,r,s280,\tname\r\n", "name\r\n"}) {
        content = line + dots;
        EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ListEntries(request, entries, errorText)) << line;
    }
    request.remotePath = "sftp://server/backup/";
    content = "\n";
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ListEntries(request, entries, errorText));
}

TEST_F(SessionListing, AListingByMlsdThatCannotBeReadIsAFailure)
{
    features = {"MLST type*;"};
    SFtpSession session;
    std::vector<RemoteEntry> entries;
    for (const char* const line : {"Type=file;size=7 a\r\n", "size=7;type=file;"}) {
        content = std::string("type=file; b\r\n") + line;
        EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ListEntries(request, entries, errorText)) << line;
        EXPECT_EQ(scripted::text(8) + ": a line of the listing is not in the format of MLSD", errorText);
    }
    const std::string dots = "\r\ntype=cdir; .\r\ntype=dir; ..\r\ntype=pdir; /above\r\n";
    content = dots;
    EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
    EXPECT_TRUE(entries.empty());
    content = "type=file; half\r\nof a name, type=what\r\n" + dots;
    EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
    EXPECT_EQ(1U, entries.size());
    content = "name\r\n" + dots;
    EXPECT_EQ(CURLE_WEIRD_SERVER_REPLY, session.ListEntries(request, entries, errorText));
}

TEST_F(SessionListing, TheServerIsAskedForItsFeaturesOnce)
{
    features = {"MLST type*;"};
    content = "";
    const Lines lines = way(journalOfSession([&](SFtpSession& session) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(0, operationCall("ListEntries").run(session, request, errorText));
        }
    }));
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(), "1 PREQUOTE = [*FEAT]"));
}

TEST_F(SessionListing, OneEntryComesByFactsWhereTheyAreKnownToBeThere)
{
    features = {"MLST type*;"};
    content = "";
    const auto way = SessionTransfer::way(journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(0, operationCall("ListEntries").run(session, request, errorText));
        EXPECT_EQ(0, operationCall("StatEntry").run(session, request, errorText));
    }));
    EXPECT_EQ("1 PREQUOTE = [*MLST a.bak]", way.at(way.size() - 2));
    EXPECT_EQ("[a.bak file 11 at 1767323045]", lastGot());
}

TEST_F(SessionListing, OneEntryThatFactsKnowNothingOf)
{
    features = {"MLST type*;"};
    content = "";
    SFtpSession session;
    EXPECT_EQ(0, operationCall("ListEntries").run(session, request, errorText));
    refused["MLST"] = CURLE_QUOTE_ERROR;
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", nameOf(operationCall("StatEntry").run(session, request, errorText)));
    EXPECT_EQ(scripted::text(78) + ": QUOT string not accepted: MLST a.bak (the server's last reply: 550 not that)",
              errorText);
    refusal = "250 End";
    EXPECT_EQ("CURLE_WEIRD_SERVER_REPLY", nameOf(operationCall("StatEntry").run(session, request, errorText)));
    EXPECT_EQ(scripted::text(8) + ": the reply to MLST holds no facts", errorText);
    performGives(CURLE_SEND_FAIL_REWIND);
    EXPECT_EQ("CURLE_SEND_FAIL_REWIND", nameOf(operationCall("StatEntry").run(session, request, errorText)));
}

TEST_F(SessionListing, OneEntryByCommands)
{
    scripted::curl().size = 17;
    scripted::curl().time = 1000;
    const auto served = scripted::curl().perform;
    const auto says = [&served](const char* reply) {
        scripted::curl().perform = [served, reply](scripted::Handle& handle) {
            const CURLcode code = served(handle);
            handle.hear(reply);
            return code;
        };
    };
    says("213 17\r\n");
    wayOf("StatEntry");
    EXPECT_EQ("[a.bak file 17 at 1000]", lastGot());
    // libcurl makes 0 of it.
    scripted::curl().size = 0;
    says("213 many\r\n");
    wayOf("StatEntry");
    EXPECT_EQ("[a.bak file -1 at 1000]", lastGot());
    // A file of which the server reports nothing is not there.
    scripted::curl().time = -1;
    SFtpSession session;
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", nameOf(operationCall("StatEntry").run(session, request, errorText)));
    EXPECT_EQ("libcurl's text for 78: the server reports neither its size nor its time", errorText);
}

TEST_F(SessionListing, OneEntryMayBeADirectory)
{
    scripted::curl().perform = [&](scripted::Handle&) {
        return ++transfers == 1 ? CURLE_REMOTE_FILE_NOT_FOUND : CURLE_OK;
    };
    EXPECT_TRUE(sameLines({"handle 1 made", "1 URL = ftp://server:2121/backup/a.bak",
                           "1 URL = ftp://server:2121/backup/a.bak/", "1 PREQUOTE = [*NOOP]", "handle 1 cleaned up"},
                          wayOf("StatEntry")));
    EXPECT_EQ("[a.bak directory -1]", lastGot());
    // What cannot be entered either is not there: the first reply tells why.
    transfers = 0;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        handle.hear(++transfers == 1 ? "550 no file\r\n" : "550 no directory\r\n");
        return transfers == 1 ? CURLE_REMOTE_FILE_NOT_FOUND : CURLE_REMOTE_ACCESS_DENIED;
    };
    wayOf("StatEntry", CURLE_REMOTE_FILE_NOT_FOUND);
    EXPECT_EQ(scripted::text(78) + ": there is no \"a.bak\"", errorText);
}

TEST_F(SessionListing, TheTopIsADirectory)
{
    request.remotePath = "ftp://server/";
    EXPECT_TRUE(sameLines({"handle 1 made", "1 URL = ftp://server:21/", "1 PREQUOTE = [*NOOP]", "handle 1 cleaned up"},
                          wayOf("StatEntry")));
    EXPECT_EQ("[/ directory -1]", lastGot());
}

TEST_F(SessionListing, OneEntryOverSshIsInItsDirectoryOrNowhere)
{
    request.remotePath = "sftp://server/backup/b";
    content = "-rw-r--r-- 1 u g 7 Jan  1 00:00 a\n-rw-r--r-- 1 u g 8 Jan  1 00:00 b\n";
    wayOf("StatEntry");
    EXPECT_EQ("[b file 8 at 1000]", lastGot());
    request.remotePath = "sftp://server/backup/c";
    wayOf("StatEntry", CURLE_REMOTE_FILE_NOT_FOUND);
    EXPECT_EQ(scripted::text(78) + ": the directory holds no \"c\"", errorText);
}

// It may be removed between the two, or may not be looked at.
TEST_F(SessionListing, OneEntryOverSshMayHaveNoTime)
{
    request.remotePath = "sftp://server/backup/b";
    content = "-rw-r--r-- 1 u g 8 Jan  1 00:00 b\n";
    const auto served = scripted::curl().perform;
    const auto whereTheFileGives = [&](CURLcode code) {
        bool isListed = false;
        scripted::curl().perform = [&, isListed](scripted::Handle& handle) mutable {
            return std::exchange(isListed, true) ? code : served(handle);
        };
        SFtpSession session;
        return nameOf(operationCall("StatEntry").run(session, request, errorText));
    };
    for (const CURLcode code : {CURLE_REMOTE_FILE_NOT_FOUND, CURLE_REMOTE_ACCESS_DENIED, CURLE_SSH}) {
        EXPECT_EQ("CURLE_OK", whereTheFileGives(code)) << nameOf(code);
        EXPECT_EQ("[b file 8]", lastGot()) << nameOf(code);
    }
    EXPECT_EQ("CURLE_SEND_FAIL_REWIND", whereTheFileGives(CURLE_SEND_FAIL_REWIND));
}

TEST_F(SessionListing, ALineWithoutEndEndsAListing)
{
    content = std::string(1024 * 1024 - 2, 'x') + " .\n"; // no entry
    SFtpSession session;
    EXPECT_EQ("CURLE_OK", nameOf(operationCall("ListEntries").run(session, request, errorText)));
    content = std::string(1024 * 1024 + 1, 'x');
    EXPECT_EQ("CURLE_WEIRD_SERVER_REPLY", nameOf(operationCall("ListEntries").run(session, request, errorText)));
    EXPECT_EQ(scripted::text(8) + ": a line of the listing does not end", errorText);
}
