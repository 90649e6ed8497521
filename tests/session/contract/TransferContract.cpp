// Downloads, streams, rates and names, where the server or the caller does not go along.
#include "RecordedDisk.h"
#include "SessionTransfer.h"

#include <chrono>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

// libcurl 8.14 ends with a 47 that is no redirect's.
TEST_F(SessionTransfer, ADownloadForWhichLibcurlDropsTheConnectionRunsOnceMore)
{
    request.remotePath = "sftp://server/backup/a.bak";
    unsigned wrong = 1;
    scripted::curl().perform = [&](scripted::Handle&) {
        return ++transfers <= wrong ? CURLE_TOO_MANY_REDIRECTS : CURLE_OK;
    };
    wayOf("DownLoadSFtpFile");
    EXPECT_EQ(2U, transfers);
    EXPECT_EQ("", contentOf(request.localPath));
    transfers = 0;
    wrong = 2;
    wayOf("DownLoadSFtpFile", CURLE_TOO_MANY_REDIRECTS);
    EXPECT_EQ(2U, transfers);
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

// libcurl, which looks at the rate between its rounds, brings all that a near server has sent in one of them.
TEST_F(SessionTransfer, NoMoreIsTakenThanTheRateAllows)
{
    using std::chrono::milliseconds;
    scripted::curl().perform = [](scripted::Handle& handle) {
        return handle.receive("12345") == 5 && handle.receive("67890") == 5 ? CURLE_OK : CURLE_WRITE_ERROR;
    };
    SFtpSession* running = nullptr;
    const auto received = [&] {
        SFtpSession session(options);
        running = &session;
        std::ostringstream out;
        const int code = session.DownLoadTo(request, out, errorText);
        return nameOf(code) + " " + out.str();
    };
    for (const char* const url : {"ftps://server/backup/a.bak", "sftp://server/backup/a.bak"}) {
        request.remotePath = url;
        options = {};
        options.receiveRate = 50;
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ("CURLE_OK 1234567890", received());
        EXPECT_LE(milliseconds(200), std::chrono::steady_clock::now() - begin);

        options.receiveRate = 1;
        options.callTimeout = milliseconds(10);
        EXPECT_EQ("CURLE_OPERATION_TIMEDOUT 12345", received());
        options.callTimeout = milliseconds(0);
        options.progress = [&](const TransferProgress& now) {
            if (now.bytes == 5) {
                running->Cancel();
            }
        };
        EXPECT_EQ("CURLE_ABORTED_BY_CALLBACK 12345", received());
    }
}

TEST_F(SessionTransfer, NoMoreIsSentThanTheRateAllows)
{
    using std::chrono::milliseconds;
    const auto sent = [&] {
        std::string all;
        scripted::curl().perform = [&all](scripted::Handle& handle) {
            std::string bytes;
            while (handle.pointer(CURLOPT_READFUNCTION) != nullptr && handle.send(bytes, 5) == 5) {
                all += bytes;
            }
            return all.size() == 10 ? CURLE_OK : CURLE_ABORTED_BY_CALLBACK;
        };
        SFtpSession session(options);
        std::istringstream in("1234567890");
        const int code = session.UploadFrom(request, in, errorText);
        return nameOf(code) + " " + all;
    };
    options.verifyUpload = options.atomicUpload = false;
    for (const char* const url : {"ftps://server/backup/a.bak", "sftp://server/backup/a.bak"}) {
        request.remotePath = url;
        options.callTimeout = milliseconds(0);
        options.sendRate = 50;
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ("CURLE_OK 1234567890", sent());
        EXPECT_LE(milliseconds(200), std::chrono::steady_clock::now() - begin);
        options.sendRate = 1;
        options.callTimeout = milliseconds(10);
        EXPECT_EQ("CURLE_OPERATION_TIMEDOUT ", sent());
    }
}

TEST_F(SessionTransfer, OfASlowRateLittleIsSentAtOnce)
{
    options.sendRate = 8;
    options.verifyUpload = options.atomicUpload = false;
    scripted::curl().perform = [](scripted::Handle& handle) {
        std::string bytes;
        EXPECT_EQ(4U, handle.send(bytes, 10));
        EXPECT_EQ("1234", bytes);
        return CURLE_ABORTED_BY_CALLBACK;
    };
    SFtpSession session(options);
    std::istringstream in("1234567890");
    EXPECT_EQ("CURLE_ABORTED_BY_CALLBACK", nameOf(session.UploadFrom(request, in, errorText)));
}

TEST_F(SessionTransfer, TheTimeThatASourceTakesIsNoStallBesideARate)
{
    using std::chrono::milliseconds;
    options.sendRate = 1000;
    options.stallTimeout = milliseconds(50);
    options.verifyUpload = options.atomicUpload = false;
    scripted::curl().perform = [](scripted::Handle& handle) {
        std::string bytes;
        EXPECT_EQ(0, handle.loggedIn());
        EXPECT_NE(0U, handle.hear("150 send the data\r\n"));
        EXPECT_EQ(5U, handle.send(bytes, 5));
        EXPECT_EQ(0U, handle.send(bytes, 5));
        return CURLE_OK;
    };
    SFtpSession session(options);
    bool given = false;
    const DataSource source = [&given](char* bytes, std::size_t) -> std::size_t {
        std::this_thread::sleep_for(milliseconds(100));
        return std::exchange(given, true) ? 0 : std::string("12345").copy(bytes, 5);
    };
    EXPECT_EQ("CURLE_OK", nameOf(session.UploadFrom(request, source, errorText))) << errorText;
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

TEST_F(SessionTransfer, AFunctionThatIsNoneIsRefused)
{
    SFtpSession session;
    EXPECT_EQ("CURLE_BAD_FUNCTION_ARGUMENT", nameOf(session.DownLoadTo(request, DataSink(), errorText)));
    EXPECT_EQ(scripted::text(43) + ": sink is empty", errorText);
    EXPECT_EQ("CURLE_BAD_FUNCTION_ARGUMENT", nameOf(session.UploadFrom(request, DataSource(), errorText)));
    EXPECT_EQ(scripted::text(43) + ": source is empty", errorText);
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
