// Uploads, where the server or the source does not go along.
#include "SessionTransfer.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace {

class SessionUpload : public SessionTransfer
{
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

TEST_F(SessionUpload, MakesMissingDirectoriesOnlyWhereItMust)
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

TEST_F(SessionUpload, OverSshMakesMissingDirectories)
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

TEST_F(SessionUpload, ThatIsNotWholeIsRemoved)
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

TEST_F(SessionUpload, IsNotTakenForWholeWhereTheServerTellsNoSize)
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

TEST_F(SessionUpload, ThatIsNotRenamedIsRemoved)
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

TEST_F(SessionUpload, ReplacesAFileThatIsInTheWay)
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

TEST_F(SessionUpload, ADirectoryThatIsInTheWayKeepsItsName)
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

TEST_F(SessionUpload, AReplacementThatIsCancelledSaysSo)
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

TEST_F(SessionUpload, OverSshReplacesAFile)
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

TEST_F(SessionUpload, OverSshThatIsNotWholeIsRemoved)
{
    request.remotePath = "sftp://server/backup/a.bak";
    toldSize = "16";
    const Lines lines = wayOf("UploadFileToSFtpServer", CURLE_PARTIAL_FILE);
    EXPECT_EQ("1 POSTQUOTE = [*rm \"/backup/" + kPart + "\"]", lines.at(lines.size() - 2));
    EXPECT_EQ(scripted::text(18) + ": the server has 16 of the 17 bytes that were sent", errorText);
    options.verifyUpload = false;
    wayOf("UploadFileToSFtpServer");
}

TEST_F(SessionUpload, InPlaceIsNeitherRenamedNorRemoved)
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

TEST_F(SessionUpload, AConnectionThatSpeaksTls13IsNotKeptAfterAnUpload)
{
    options.minimumTls = TlsVersion::Tls13;
    const Lines lines = journalOfCall(operationCall("UploadFileToSFtpServer").run);
    EXPECT_LT(std::find(lines.begin(), lines.end(), "handle 1 cleaned up"),
              std::find(lines.begin(), lines.end(), endOf("UploadFileToSFtpServer", request)));
    options.minimumTls = TlsVersion::Tls12;
    const Lines kept = journalOfCall(operationCall("UploadFileToSFtpServer").run);
    EXPECT_EQ("handle 1 cleaned up", kept.back());
}

TEST_F(SessionUpload, ASourceThatHasOtherThanAnnouncedEndsAnUpload)
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
    EXPECT_EQ("CURLE_READ_ERROR", resultOf(0));
    EXPECT_EQ(scripted::text(26) + ": the source has more than the 0 bytes that were announced", errorText);
    errorText = "as it was";
    EXPECT_EQ("CURLE_OK", resultOf(9));
    EXPECT_EQ("CURLE_OK", resultOf(-1));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ(text, uploaded);
}

TEST_F(SessionUpload, WhatASourceThrowsPassesToTheCaller)
{
    SFtpSession session;
    const DataSource source = [](char*, std::size_t) -> std::size_t { throw std::runtime_error("the host's own"); };
    EXPECT_THROW(upload(session, -1, source), std::runtime_error);
    EXPECT_EQ("as it was", errorText);
    EXPECT_TRUE(sameLines({exceptionOf("UploadFrom", request).substr(4)}, recording::takeRecords()));
    EXPECT_EQ(0, session.DelSFtpFile(request, errorText));
}

TEST_F(SessionUpload, TheEndOfAStreamThatThrowsIsNoFailure)
{
    SFtpSession session;
    for (const std::int64_t size : {-1, 4}) {
        std::istringstream in("text");
        in.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
        EXPECT_EQ("CURLE_OK", nameOf(session.UploadFrom(request, in, errorText, size))) << size;
        EXPECT_EQ("text", uploaded) << size;
    }
}

TEST_F(SessionUpload, WhatAStreamThatBreaksThrowsPasses)
{
    class Broken : public std::streambuf
    {
        int_type underflow() override { throw std::out_of_range("broken"); }
    };
    Broken buffer;
    std::istream in(&buffer);
    in.exceptions(std::ios::badbit);
    EXPECT_THROW(SFtpSession().UploadFrom(request, in, errorText), std::out_of_range);
    // A stream that is not open fails, but has no end.
    std::istringstream closed("text");
    closed.setstate(std::ios::failbit);
    EXPECT_THROW(closed.exceptions(std::ios::failbit), std::ios_base::failure);
    EXPECT_THROW(SFtpSession().UploadFrom(request, closed, errorText), std::ios_base::failure);
}

TEST_F(SessionUpload, AStreamThatBreaksEndsAnUpload)
{
    SFtpSession session;
    std::istringstream in("text");
    in.setstate(std::ios::badbit);
    EXPECT_EQ("CURLE_READ_ERROR", nameOf(session.UploadFrom(request, in, errorText)));
    EXPECT_EQ(0U, errorText.find(scripted::text(26) + ": the stream cannot be read"));
}

// libcurl has no words for it.
TEST_F(SessionUpload, AnSshServerThatTakesNoMoreIsNamed)
{
    request.remotePath = "sftp://server/backup/a.bak";
    const auto resultOf = [this](bool sends) {
        scripted::curl().perform = [sends](scripted::Handle& handle) {
            std::string bytes;
            if (sends && handle.pointer(CURLOPT_READFUNCTION) != nullptr) {
                handle.send(bytes, 100);
            }
            return CURLE_SSH;
        };
        SFtpSession session;
        std::istringstream in("text");
        return nameOf(session.UploadFrom(request, in, errorText));
    };
    EXPECT_EQ("CURLE_SSH", resultOf(false));
    EXPECT_EQ(scripted::text(CURLE_SSH), errorText);
    EXPECT_EQ("CURLE_SSH", resultOf(true));
    EXPECT_EQ(scripted::text(CURLE_SSH) +
                  ": the server takes no more bytes: its disk may be full, or the connection lost",
              errorText);
}
