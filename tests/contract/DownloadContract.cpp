#include "harness/Contract.h"

#include "transfer/CurlSFtpResponse.h"

#include <cstdint>

namespace {

class DownloadContract : public Contract
{
protected:
    DownloadContract() { request.remotePath = "ftp://server:2121/backup/a.bak"; }

    Lines download(bool expected, int code, uint32_t timeout = 90)
    {
        return journalOf([&] {
            CurlSFtpResponse transfer;
            {
                const memory::Pause pause;
                keepMembers(transfer);
            }
            EXPECT_EQ(expected, transfer.DownLoadSFtpFile(request, timeout));
            EXPECT_EQ(code, transfer.m_ErrorCode);
            expectMembersKept(transfer);
        });
    }

    Lines untilPerformed() const
    {
        return Lines({"handle 1 made", "credentials joined", "open " + request.localPath + " w+", "unbuffered"}) +
               tlsStep(1) +
               Lines({"1 URL = ftp://server:2121/backup/a.bak", "1 PORT = 4000060021",
                      "1 USERPWD = operator:correct horse battery", "1 WRITEFUNCTION = sftp_write_data",
                      "1 WRITEDATA = stream", "1 CONNECTTIMEOUT = 20", "1 NOSIGNAL = 1", "1 perform",
                      "credentials wiped"});
    }

    Lines success() const
    {
        return untilPerformed() +
               Lines({"close", "log 2 SFtpClient 77 CurlSFtpResponse::DownLoadSFtpFile(): 0|DownLoadSFtpFile():end |",
                      "handle 1 cleaned up"});
    }

    Lines failure(int code) const
    {
        return untilPerformed() + Lines({"log 4 SFtpClient 77 CurlSFtpResponse::DownLoadSFtpFile(): "
                                         "0|DownLoadSFtpFile() list dir failed.code:|" +
                                             std::to_string(code) + "|",
                                         "close", "handle 1 cleaned up"});
    }
};

TEST_F(DownloadContract, SuccessClosesTheFileBeforeItsRecord) { EXPECT_EQ(success(), download(true, 0)); }

TEST_F(DownloadContract, WritesWhatArrives)
{
    const std::string bytes("a\0b\r\n", 5);
    scripted::curl().perform = [&](scripted::Handle& handle) {
        EXPECT_EQ(bytes.size(), handle.receive(bytes));
        EXPECT_EQ(bytes, contentOf(request.localPath)) << "each block reaches the file at once";
        EXPECT_EQ(bytes.size(), handle.receive(bytes));
        return CURLE_OK;
    };
    download(true, 0);
    EXPECT_EQ(bytes + bytes, contentOf(request.localPath));
}

TEST_F(DownloadContract, FailureLogsTheCodeBeforeItClosesTheFile)
{
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(failure(code), download(false, code));
    }
}

TEST_F(DownloadContract, RecordsTheCodeThatLibcurlGaveNotTheReportedOne)
{
    performGives(CURLE_REMOTE_ACCESS_DENIED);
    EXPECT_EQ(failure(9), download(false, 9));
}

TEST_F(DownloadContract, AnOldFileIsEmptiedBeforeTheTransferAndKeepsWhatArrived)
{
    writeFile(request.localPath, "an old file of some length");
    scripted::curl().perform = [&](scripted::Handle& handle) {
        EXPECT_EQ("", contentOf(request.localPath));
        handle.receive("new");
        return CURLE_PARTIAL_FILE;
    };
    EXPECT_EQ(failure(18), download(false, 18));
    EXPECT_EQ("new", contentOf(request.localPath));
}

TEST_F(DownloadContract, AFileThatCannotBeOpenedEndsItBeforeAnyOption)
{
    request.localPath = path("no-folder/local");
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open " + request.localPath + " w+ fails",
                            "credentials wiped",
                            "log 4 SFtpClient 77 CurlSFtpResponse::DownLoadSFtpFile(): "
                            "0|DownLoadSFtpFile():open file failed. |",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, download(false, 2));
}

TEST_F(DownloadContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        scripted::curl().made = 0;
        EXPECT_EQ(success(), download(true, 0, timeout));
    }
}

TEST_F(DownloadContract, AFullDiskShowsInTheFirstShortWrite)
{
    request.localPath = "/dev/full";
    scripted::curl().perform = [](scripted::Handle& handle) {
        return handle.receive("twenty bytes of data") == 20 ? CURLE_OK : CURLE_WRITE_ERROR;
    };
    EXPECT_EQ(failure(23), download(false, 23));
}

TEST_F(DownloadContract, LibcurlGetsACopyOfTheUrl)
{
    download(true, 0);
    EXPECT_EQ(request.remotePath, scripted::curl().url);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

TEST_F(DownloadContract, AnExceptionWipesTheCredentialsToo)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    Lines lines = journalOf([&] {
        CurlSFtpResponse transfer;
        EXPECT_THROW(transfer.DownLoadSFtpFile(request, 90), std::bad_alloc);
        EXPECT_EQ(2, transfer.m_ErrorCode);
    });
    // What is released by an exception goes in the order opposite to its making.
    EXPECT_EQ(Lines({"1 perform", "close", "credentials wiped", "handle 1 cleaned up"}),
              Lines(lines.end() - 4, lines.end()));
}

} // namespace
