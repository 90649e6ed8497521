#include "contract/TransferContract.h"

namespace {

constexpr const char* kFunction = "CurlSFtpResponse::DownLoadSFtpFile";

void aim(SFtpRequest& request) { request.remotePath = "ftp://server:2121/backup/a.bak"; }

Lines untilPerformed(const SFtpRequest& request)
{
    return Lines{"handle 1 made", "credentials joined", "open " + request.localPath + " w+", "unbuffered"} + tlsStep() +
           Lines{"1 URL = ftp://server:2121/backup/a.bak",
                 kPort,
                 "1 USERPWD = operator:correct horse battery",
                 "1 WRITEFUNCTION = sftp_write_data",
                 "1 WRITEDATA = stream",
                 "1 CONNECTTIMEOUT = 20",
                 "1 NOSIGNAL = 1",
                 "1 perform",
                 "credentials wiped"};
}

Lines failure(int code)
{
    return {recordLine(4, kFunction, "DownLoadSFtpFile() list dir failed.code:|" + std::to_string(code)), "close"};
}

} // namespace

Transfer download()
{
    const Lines success = {"close", recordLine(2, kFunction, "DownLoadSFtpFile():end ")};
    return {"Download", &CurlSFtpResponse::DownLoadSFtpFile, aim, untilPerformed, success, failure};
}

namespace {

class DownloadContract : public TransferContract
{
protected:
    DownloadContract() : TransferContract(download()) {}
};

TEST_F(DownloadContract, WritesWhatArrives)
{
    const std::string bytes("a\0b\r\n", 5);
    scripted::curl().perform = [&](scripted::Handle& handle) {
        const memory::Pause pause;
        EXPECT_EQ(bytes.size(), handle.receive(bytes));
        EXPECT_EQ(bytes, contentOf(request.localPath)) << "each block reaches the file at once";
        EXPECT_EQ(bytes.size(), handle.receive(bytes));
        return CURLE_OK;
    };
    expectSuccess();
    EXPECT_EQ(bytes + bytes, contentOf(request.localPath));
}

TEST_F(DownloadContract, EmptiesAnOldFileBeforeTheTransferAndKeepsWhatArrived)
{
    scripted::curl().perform = [&](scripted::Handle& handle) {
        const memory::Pause pause;
        EXPECT_EQ("", contentOf(request.localPath));
        handle.receive("new");
        return CURLE_PARTIAL_FILE;
    };
    EXPECT_TRUE(sameLines(untilPerformed(request) + failure(CURLE_PARTIAL_FILE) + Lines{"handle 1 cleaned up"},
                          run(false, CURLE_PARTIAL_FILE)));
    EXPECT_EQ("new", contentOf(request.localPath));
}

TEST_F(DownloadContract, SetsNoOptionIfTheFileCannotBeOpened)
{
    request.localPath = path("no-folder/local");
    expectEndedAfter({"credentials joined", "open " + request.localPath + " w+ fails", "credentials wiped",
                      recordLine(4, kFunction, "DownLoadSFtpFile():open file failed. ")});
}

TEST_F(DownloadContract, DetectsAFullDiskAtTheFirstShortWrite) { expectFullDiskNoticed(); }

} // namespace
