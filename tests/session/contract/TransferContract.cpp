// Uploads, downloads and listings, where the server or the caller's own functions do not go along.
#include "OperationCalls.h"
#include "RecordedDisk.h"
#include "SessionContract.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace {

class SessionTransfer : public SessionContract
{
protected:
    // What of a journal tells where a transfer went and what came behind it.
    static Lines way(const Lines& lines)
    {
        Lines told;
        for (const std::string& line : lines) {
            for (const char* const option : {"1 URL = ", "1 PREQUOTE = ", "1 POSTQUOTE = ", "1 FTP_FILEMETHOD = 1",
                                             "2 URL = ", "2 PREQUOTE = ", "2 POSTQUOTE = ", "1 FTP_CREATE_MISSING_DIRS",
                                             "handle ", "1 CUSTOMREQUEST", "1 getinfo"}) {
                if (line.rfind(option, 0) == 0) {
                    told.push_back(line);
                }
            }
        }
        return told;
    }

    Lines wayOf(const std::string& function, int expected = CURLE_OK)
    {
        return way(journalOfCall(operationCall(function).run, expected));
    }

    /// Ends transfers, counted from 1, with these codes once they have been served.
    void endTransfers(const std::map<unsigned, CURLcode>& codes)
    {
        transfers = 0;
        m_ends = codes;
        scripted::curl().perform = [this](scripted::Handle& handle) {
            const CURLcode code = m_served(handle);
            const auto own = m_ends.find(++transfers);
            return own == m_ends.end() ? code : own->second;
        };
    }
    unsigned transfers = 0;

    int upload(SFtpSession& session, std::int64_t size, const DataSource& source)
    {
        return session.UploadFrom(request, source, errorText, size);
    }

private:
    const std::function<CURLcode(scripted::Handle&)> m_served = scripted::curl().perform;
    std::map<unsigned, CURLcode> m_ends;
};

const std::string kPart = ".a.bak.XXXXXXXXXXXX.part";
const std::string kUpload = "1 URL = ftp://server:2121/backup/" + kPart;
const std::string kCommands = "1 POSTQUOTE = [*SIZE " + kPart + "][RNFR " + kPart + "][RNTO a.bak]";
const std::string kOld = ".a.bak.XXXXXXXXXXXX.old";
// A file that is in the way is no directory, and is renamed.
const Lines kAway = {"1 URL = ftp://server:2121/backup/a.bak/", "1 URL = ftp://server:2121/backup/",
                     "1 PREQUOTE = [*RNFR a.bak]", "1 POSTQUOTE = [RNTO " + kOld + "]"};
const std::string kDirectory = "1 URL = ftp://server:2121/backup/";
const std::string kRemoval = "1 PREQUOTE = [*DELE " + kPart + "]";

} // namespace

TEST_F(SessionTransfer, AnUploadMakesMissingDirectoriesOnlyWhereItMust)
{
    const auto served = scripted::curl().perform;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        return ++transfers == 1 ? CURLE_REMOTE_ACCESS_DENIED : served(handle);
    };
    EXPECT_TRUE(sameLines({"handle 1 made", kUpload, kCommands, kUpload, "1 FTP_FILEMETHOD = 1",
                           "1 FTP_CREATE_MISSING_DIRS = 2", kCommands, "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer")));
    EXPECT_EQ("seventeen bytes.\n", uploaded);

    performGives(CURLE_REMOTE_ACCESS_DENIED);
    EXPECT_TRUE(sameLines({"handle 1 made", kUpload, kCommands, kUpload, "1 FTP_FILEMETHOD = 1",
                           "1 FTP_CREATE_MISSING_DIRS = 2", kCommands, "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer", CURLE_REMOTE_FILE_NOT_FOUND)));
}

TEST_F(SessionTransfer, AnUploadOverSshMakesMissingDirectories)
{
    request.remotePath = "sftp://server/backup/a.bak";
    const auto served = scripted::curl().perform;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        return ++transfers == 1 ? CURLE_REMOTE_FILE_NOT_FOUND : served(handle);
    };
    wayOf("UploadFileToSFtpServer");
    EXPECT_EQ(4U, transfers) << "in vain, with the directories, its size, its new name";
    // Over FTP the same code is no directory's.
    request.remotePath = "ftp://server/backup/a.bak";
    performGives(CURLE_REMOTE_FILE_NOT_FOUND);
    EXPECT_EQ(4U, wayOf("UploadFileToSFtpServer", CURLE_REMOTE_FILE_NOT_FOUND).size());
}

TEST_F(SessionTransfer, AnUploadThatIsNotWholeIsRemoved)
{
    toldSize = "16";
    EXPECT_TRUE(sameLines({"handle 1 made", kUpload, kCommands, kDirectory, kRemoval, "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE)));
    EXPECT_EQ(scripted::text(18) +
                  ": the server has 16 of the 17 bytes that were sent (the server's last reply: 213 16)",
              errorText);
    toldSize = "18";
    wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE);
}

TEST_F(SessionTransfer, AnUploadIsNotTakenForWholeWhereTheServerTellsNoSize)
{
    for (const char* const told : {"unknown", "17 bytes", "-1", "99999999999999999999"}) {
        toldSize = told;
        wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE);
        EXPECT_EQ(scripted::text(18) +
                      ": the server does not report the size of what was sent (the server's last reply: "
                      "213 " +
                      told + ")",
                  errorText);
    }
    refused["SIZE"] = CURLE_QUOTE_ERROR;
    EXPECT_TRUE(sameLines({"handle 1 made", kUpload, kCommands, kDirectory, kRemoval, "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE)));
    // A server that does not know the command.
    for (const char* const reply : {"500 what?", "502 not here"}) {
        refusal = reply;
        EXPECT_TRUE(
            sameLines({"handle 1 made", kUpload, kCommands, "handle 1 cleaned up"}, wayOf("UploadFileToSFtpServer")));
    }
}

TEST_F(SessionTransfer, AnUploadThatIsNotRenamedIsRemoved)
{
    targetIsFile = true;
    refused["RNTO"] = CURLE_QUOTE_ERROR;
    const Lines lines =
        Lines{"handle 1 made", kUpload, kCommands} + kAway + Lines{kDirectory, kRemoval, "handle 1 cleaned up"};
    EXPECT_TRUE(sameLines(lines, wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR)));
    EXPECT_EQ(scripted::text(21) + " (the server's last reply: 550 not that)", errorText);
    // The removal's own failure changes nothing.
    refused["DELE"] = CURLE_QUOTE_ERROR;
    EXPECT_TRUE(sameLines(lines, wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR)));
    EXPECT_EQ(scripted::text(21) + " (the server's last reply: 550 not that)", errorText);
}

TEST_F(SessionTransfer, AnUploadReplacesAFileThatIsInTheWay)
{
    targetIsFile = true;
    unsigned renamings = 0;
    const auto served = scripted::curl().perform;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        refused.clear();
        if (++renamings == 1) {
            refused["RNTO"] = CURLE_QUOTE_ERROR;
        }
        return served(handle);
    };
    const Lines replaced = {kDirectory, "1 PREQUOTE = [*RNFR " + kPart + "]",
                            "1 POSTQUOTE = [RNTO a.bak][DELE " + kOld + "]", "handle 1 cleaned up"};
    EXPECT_TRUE(
        sameLines(Lines{"handle 1 made", kUpload, kCommands} + kAway + replaced, wayOf("UploadFileToSFtpServer")));
    EXPECT_EQ("as it was", errorText);
}

TEST_F(SessionTransfer, ADirectoryThatIsInTheWayKeepsItsName)
{
    refused["RNTO"] = CURLE_QUOTE_ERROR;
    const std::string entered = "1 URL = ftp://server:2121/backup/a.bak/";
    EXPECT_TRUE(sameLines({"handle 1 made", kUpload, kCommands, entered, kDirectory, kRemoval, "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR)));
    EXPECT_EQ(scripted::text(21) + " (the server's last reply: 550 not that)", errorText);

    request.remotePath = "sftp://server/backup/a.bak";
    endTransfers({{3, CURLE_QUOTE_ERROR}});
    const Lines lines = wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR);
    EXPECT_EQ(5U, transfers)
        << "it is sent, its size is asked for, it is not renamed, the directory listed, it is removed";
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(), "1 URL = sftp://server:22/backup/a.bak/"));
}

TEST_F(SessionTransfer, AReplacementThatIsCancelledSaysSo)
{
    targetIsFile = true;
    refused["RNTO"] = CURLE_QUOTE_ERROR;
    SFtpSession session(options);
    const auto served = scripted::curl().perform;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        if (++transfers == 2) {
            session.Cancel();
        }
        return served(handle);
    };
    EXPECT_EQ("CURLE_ABORTED_BY_CALLBACK", nameOf(session.UploadFileToSFtpServer(request, errorText)));
}

TEST_F(SessionTransfer, AnUploadOverSshReplacesAFile)
{
    targetIsFile = true;
    request.remotePath = "sftp://server/backup/a.bak";
    endTransfers({{3, CURLE_QUOTE_ERROR}});
    const std::string directory = "1 URL = sftp://server:22/backup/";
    const std::string file = "\"/backup/a.bak\"";
    const std::string part = "\"/backup/" + kPart + "\"";
    const std::string old = "\"/backup/" + kOld + "\"";
    const Lines begin = {"handle 1 made",
                         directory + kPart,
                         "1 POSTQUOTE = null",
                         directory + kPart,
                         "1 getinfo CONTENT_LENGTH_DOWNLOAD_T",
                         "1 getinfo FILETIME_T",
                         directory,
                         "1 POSTQUOTE = [rename " + part + " " + file + "]",
                         directory + "a.bak/",
                         directory,
                         "1 POSTQUOTE = [rename " + file + " " + old + "]"};
    const Lines replaced = {directory, "1 POSTQUOTE = [rename " + part + " " + file + "][rm " + old + "]"};
    const Lines end = {"handle 1 cleaned up"};
    EXPECT_TRUE(sameLines(begin + replaced + end, wayOf("UploadFileToSFtpServer")));
    EXPECT_EQ("as it was", errorText);

    // What was renamed away comes back, and the new one goes.
    endTransfers({{3, CURLE_QUOTE_ERROR}, {6, CURLE_QUOTE_ERROR}});
    const Lines back = {directory, "1 POSTQUOTE = [rename " + file + " " + part + "]", directory,
                        "1 POSTQUOTE = [rename " + old + " " + file + "]"};
    const Lines removed = {directory, "1 POSTQUOTE = [*rm " + part + "]"};
    EXPECT_TRUE(sameLines(begin + replaced + back + removed + end, wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR)));
    EXPECT_EQ(0U, errorText.find(scripted::text(21)));
    EXPECT_EQ(std::string::npos, errorText.find("may be under"));

    // Where it does not come back, both stay, and the text tells where.
    endTransfers({{3, CURLE_QUOTE_ERROR}, {6, CURLE_QUOTE_ERROR}, {7, CURLE_QUOTE_ERROR}, {8, CURLE_QUOTE_ERROR}});
    EXPECT_TRUE(sameLines(begin + replaced + back + end, wayOf("UploadFileToSFtpServer", CURLE_QUOTE_ERROR)));
    EXPECT_NE(std::string::npos, errorText.find("; the new file may be under .a.bak."));
    EXPECT_NE(std::string::npos, errorText.find(", the old one under .a.bak."));
    // So it is where the connection ends in between: nothing more is tried then.
    endTransfers({{3, CURLE_QUOTE_ERROR}, {6, CURLE_RECV_ERROR}});
    EXPECT_TRUE(sameLines(begin + replaced + end, wayOf("UploadFileToSFtpServer", CURLE_RECV_ERROR)));
    EXPECT_NE(std::string::npos, errorText.find("; the new file may be under .a.bak."));
}

TEST_F(SessionTransfer, AnUploadOverSshThatIsNotWholeIsRemoved)
{
    request.remotePath = "sftp://server/backup/a.bak";
    toldSize = "16";
    const Lines lines = wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE);
    EXPECT_EQ("1 POSTQUOTE = [*rm \"/backup/" + kPart + "\"]", lines.at(lines.size() - 2));
    EXPECT_EQ(scripted::text(18) + ": the server has 16 of the 17 bytes that were sent", errorText);
    options.verifyUpload = false;
    wayOf("UploadFileToSFtpServer");
}

TEST_F(SessionTransfer, AnUploadInPlaceIsNeitherRenamedNorRemoved)
{
    options.atomicUpload = false;
    toldSize = "16";
    EXPECT_TRUE(sameLines({"handle 1 made", "1 URL = ftp://server:2121/backup/a.bak", "1 POSTQUOTE = [*SIZE a.bak]",
                           "handle 1 cleaned up"},
                          wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE)));
    options.verifyUpload = false;
    EXPECT_TRUE(sameLines(
        {"handle 1 made", "1 URL = ftp://server:2121/backup/a.bak", "1 POSTQUOTE = null", "handle 1 cleaned up"},
        wayOf("UploadFileToSFtpServer")));
    options.atomicUpload = true;
    EXPECT_TRUE(
        sameLines({"handle 1 made", kUpload, "1 POSTQUOTE = [RNFR " + kPart + "][RNTO a.bak]", "handle 1 cleaned up"},
                  wayOf("UploadFileToSFtpServer")));
}

TEST_F(SessionTransfer, AConnectionThatSpeaksTls13IsNotKeptAfterAnUpload)
{
    options.minimumTls = TlsVersion::Tls13;
    const Lines lines = journalOfCall(operationCall("UploadFileToSFtpServer").run);
    EXPECT_LT(std::find(lines.begin(), lines.end(), "handle 1 cleaned up"),
              std::find(lines.begin(), lines.end(), endOf("UploadFileToSFtpServer", request)));
    options.minimumTls = TlsVersion::Tls12;
    const Lines kept = journalOfCall(operationCall("UploadFileToSFtpServer").run);
    EXPECT_EQ("handle 1 cleaned up", kept.back());
}

TEST_F(SessionTransfer, ASourceThatHasOtherThanAnnouncedEndsAnUpload)
{
    const std::string text = "the bytes";
    const auto source = [&text](std::size_t& at) {
        return [&](char* bytes, std::size_t count) {
            const std::size_t given = std::min(text.size() - at, count);
            text.copy(bytes, given, at);
            at += given;
            return given;
        };
    };
    const auto resultOf = [&](std::int64_t size) {
        SFtpSession session(options);
        std::size_t at = 0;
        return nameOf(upload(session, size, source(at)));
    };
    EXPECT_EQ("CURLE_READ_ERROR", resultOf(10));
    EXPECT_EQ(scripted::text(26) + ": the source has only 9 of the 10 bytes that were announced", errorText);
    EXPECT_EQ("CURLE_READ_ERROR", resultOf(8));
    EXPECT_EQ(scripted::text(26) + ": the source has more than the 8 bytes that were announced", errorText);
    errorText = "as it was";
    EXPECT_EQ("CURLE_OK", resultOf(9));
    EXPECT_EQ("CURLE_OK", resultOf(-1));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ(text, uploaded);
}

TEST_F(SessionTransfer, WhatASourceThrowsPassesToTheCaller)
{
    SFtpSession session;
    const DataSource source = [](char*, std::size_t) -> std::size_t { throw std::runtime_error("the host's own"); };
    EXPECT_THROW(upload(session, -1, source), std::runtime_error);
    EXPECT_EQ("as it was", errorText);
    EXPECT_TRUE(sameLines({exceptionOf("UploadFrom", request).substr(4)}, recording::takeRecords()));
    EXPECT_EQ(0, session.DelSFtpFile(request, errorText));
}

TEST_F(SessionTransfer, ASinkThatTakesNoMoreEndsADownload)
{
    SFtpSession session;
    EXPECT_EQ("CURLE_WRITE_ERROR", nameOf(session.DownLoadTo(
                                       request, [](const char*, std::size_t) { return false; }, errorText)));
    EXPECT_EQ(scripted::text(23) +
                  ": the receiver of the bytes refused them (the server's last reply: 150 data follows)",
              errorText);
    EXPECT_THROW(session.DownLoadTo(
                     request, [](const char*, std::size_t) -> bool { throw std::runtime_error("own"); }, errorText),
                 std::runtime_error);
}

TEST_F(SessionTransfer, StreamsGiveAndTakeAllBytes)
{
    SFtpSession session;
    std::ostringstream out;
    EXPECT_EQ(0, session.DownLoadTo(request, out, errorText));
    EXPECT_EQ(content, out.str());
    out.setstate(std::ios::badbit);
    EXPECT_EQ("CURLE_WRITE_ERROR", nameOf(session.DownLoadTo(request, out, errorText)));
    std::istringstream in("of a stream, in pieces");
    EXPECT_EQ(0, session.UploadFrom(request, in, errorText));
    EXPECT_EQ("of a stream, in pieces", uploaded);
}

TEST_F(SessionTransfer, TooLargeAFileIsRefusedWhetherItsSizeIsToldOrNot)
{
    const auto received = [this](std::size_t bytes) {
        scripted::curl().perform = [bytes](scripted::Handle& handle) {
            return handle.receive(std::string(bytes, 'x')) == bytes ? CURLE_OK : CURLE_WRITE_ERROR;
        };
        SFtpSession session;
        return nameOf(session.DownLoadSFtpFile(request, errorText));
    };
    // A device takes what would be long in coming to a disk.
    request.localPath = path("RetentionDB.db");
    std::filesystem::create_symlink("/dev/null", request.localPath);
    EXPECT_EQ("CURLE_OK", received(104857599));
    EXPECT_EQ("CURLE_FILESIZE_EXCEEDED", received(104857600));
    EXPECT_EQ(scripted::text(63) + ": the file is larger than 104857599 bytes", errorText);
    EXPECT_TRUE(hasLine("1 MAXFILESIZE_LARGE = 104857599 (64 bits)",
                        journalOfCall(operationCall("DownLoadSFtpFile").run, CURLE_FILESIZE_EXCEEDED)));
    request.localPath = path("notRetentionDB.db");
    std::filesystem::create_symlink("/dev/null", request.localPath);
    EXPECT_EQ("CURLE_OK", received(104857600));
}

TEST_F(SessionTransfer, AListIsOfNamesWithoutTheTwoDots)
{
    content = ".\r\n..\r\na b\r\n.hidden\nlast";
    request.remotePath = "ftp://server/backup/";
    SFtpSession session;
    EXPECT_EQ(0, session.Listsftpdir(request, errorText));
    EXPECT_EQ("a b\n.hidden\nlast\n", contentOf(request.localPath));
}

TEST_F(SessionTransfer, EntriesComeByFactsWhereTheServerHasThem)
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

TEST_F(SessionTransfer, TheServerIsAskedForItsFeaturesOnce)
{
    features = {"MLST type*;"};
    const Lines lines = way(journalOfSession([&](SFtpSession& session) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(0, operationCall("ListEntries").run(session, request, errorText));
        }
    }));
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(), "1 PREQUOTE = [*FEAT]"));
}

TEST_F(SessionTransfer, OneEntryComesByFactsWhereTheyAreKnownToBeThere)
{
    features = {"MLST type*;"};
    const auto way = SessionTransfer::way(journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(0, operationCall("ListEntries").run(session, request, errorText));
        EXPECT_EQ(0, operationCall("StatEntry").run(session, request, errorText));
    }));
    EXPECT_EQ("1 PREQUOTE = [*MLST a.bak]", way.at(way.size() - 2));
    EXPECT_EQ("[a.bak file 11 at 1767323045]", lastGot());
}

TEST_F(SessionTransfer, OneEntryThatFactsKnowNothingOf)
{
    features = {"MLST type*;"};
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

TEST_F(SessionTransfer, OneEntryByCommands)
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

TEST_F(SessionTransfer, OneEntryMayBeADirectory)
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

TEST_F(SessionTransfer, TheTopIsADirectory)
{
    request.remotePath = "ftp://server/";
    EXPECT_TRUE(sameLines({"handle 1 made", "1 URL = ftp://server:21/", "1 PREQUOTE = [*NOOP]", "handle 1 cleaned up"},
                          wayOf("StatEntry")));
    EXPECT_EQ("[/ directory -1]", lastGot());
}

TEST_F(SessionTransfer, OneEntryOverSshIsInItsDirectoryOrNowhere)
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
TEST_F(SessionTransfer, OneEntryOverSshMayHaveNoTime)
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

TEST_F(SessionTransfer, AStreamThatBreaksEndsAnUpload)
{
    SFtpSession session;
    std::istringstream in("text");
    in.setstate(std::ios::badbit);
    EXPECT_EQ("CURLE_READ_ERROR", nameOf(session.UploadFrom(request, in, errorText)));
    EXPECT_EQ(0U, errorText.find(scripted::text(26) + ": the stream cannot be read"));
}

TEST_F(SessionTransfer, AFunctionThatIsNoneIsRefused)
{
    SFtpSession session;
    EXPECT_EQ("CURLE_BAD_FUNCTION_ARGUMENT", nameOf(session.DownLoadTo(request, DataSink(), errorText)));
    EXPECT_EQ(scripted::text(43) + ": sink is empty", errorText);
    EXPECT_EQ("CURLE_BAD_FUNCTION_ARGUMENT", nameOf(session.UploadFrom(request, DataSource(), errorText)));
    EXPECT_EQ(scripted::text(43) + ": source is empty", errorText);
}

TEST_F(SessionTransfer, ALineWithoutEndEndsAListing)
{
    content = std::string(1024 * 1024, 'x') + "\n";
    SFtpSession session;
    EXPECT_EQ("CURLE_OK", nameOf(operationCall("ListEntries").run(session, request, errorText)));
    content = std::string(1024 * 1024 + 1, 'x');
    EXPECT_EQ("CURLE_WEIRD_SERVER_REPLY", nameOf(operationCall("ListEntries").run(session, request, errorText)));
    EXPECT_EQ(scripted::text(8) + ": a line of the listing does not end", errorText);
}

TEST_F(SessionTransfer, APathIsTheWholeOfIt)
{
    const auto urlOf = [this](const std::string& path) {
        request.remotePath = path;
        return way(journalOfCall(operationCall("DownLoadTo").run)).at(1);
    };
    EXPECT_EQ("1 URL = ftp://server:21/%2Fetc/a%3Fb%23c%3Btype=a", urlOf("ftp://server/%2fetc/a?b#c;type=a"));
    EXPECT_EQ("1 URL = ftp://server:21/a/b", urlOf("ftp://server/a%2Fb"));
    EXPECT_EQ("1 URL = ftp://server:21/%2Fa", urlOf("ftp://server/%2Fa"));
}

TEST_F(SessionTransfer, ANameIsQuotedOverSsh)
{
    request.remotePath = "sftp://server/a/";
    request.remoteFileName = "b\"c\\d";
    EXPECT_EQ("1 POSTQUOTE = [rm \"/a/b\\\"c\\\\d\"]", wayOf("DelSFtpFile").at(2));
}
