#include "harness/Contract.h"

#include "transfer/CurlSFtpResponse.h"

#include <cstdint>

namespace {

class ListingContract : public Contract
{
protected:
    Lines list(bool expected, int code, uint32_t timeout = 90)
    {
        return journalOf([&] {
            CurlSFtpResponse transfer;
            {
                const memory::Pause pause;
                keepMembers(transfer);
            }
            EXPECT_EQ(expected, transfer.Listsftpdir(request, timeout));
            EXPECT_EQ(code, transfer.m_ErrorCode);
            expectMembersKept(transfer);
        });
    }

    Lines untilPerformed(const Lines& timeout = {"1 FTP_RESPONSE_TIMEOUT = 90"}) const
    {
        return Lines({"handle 1 made", "credentials joined", "open " + request.localPath + " wr+", "unbuffered"}) +
               tlsStep(1) +
               Lines({"1 URL = ftp://server:2121/backup/", "1 PORT = 4000060021",
                      "1 USERPWD = operator:correct horse battery"}) +
               timeout +
               Lines({"1 DIRLISTONLY = 1", "1 WRITEFUNCTION = sftp_write_data", "1 WRITEDATA = stream", "1 perform",
                      "credentials wiped"});
    }

    static Lines success()
    {
        return {"close", "log 2 SFtpClient 77 CurlSFtpResponse::Listsftpdir(): 0|Listsftpdir():end |",
                "handle 1 cleaned up"};
    }

    static Lines failure(int code)
    {
        return {"log 4 SFtpClient 77 CurlSFtpResponse::Listsftpdir(): 0|Listsftpdir() list dir failed.code:|" +
                    std::to_string(code) + "|",
                "close", "handle 1 cleaned up"};
    }
};

TEST_F(ListingContract, SuccessClosesTheFileBeforeItsRecord) { EXPECT_EQ(untilPerformed() + success(), list(true, 0)); }

TEST_F(ListingContract, WritesTheNamesAsTheyArrive)
{
    scripted::curl().perform = [&](scripted::Handle& handle) {
        handle.receive("a.bak\r\n");
        EXPECT_EQ("a.bak\r\n", contentOf(request.localPath)) << "each block reaches the file at once";
        handle.receive("b.bak\r\n");
        return CURLE_OK;
    };
    list(true, 0);
    EXPECT_EQ("a.bak\r\nb.bak\r\n", contentOf(request.localPath));
}

TEST_F(ListingContract, AnEmptyDirectoryGivesAnEmptyFile)
{
    EXPECT_EQ(untilPerformed() + success(), list(true, 0));
    EXPECT_EQ("", contentOf(request.localPath));
}

TEST_F(ListingContract, NoTimeoutSetsNone) { EXPECT_EQ(untilPerformed({}) + success(), list(true, 0, 0)); }

TEST_F(ListingContract, TheTimeoutIsPassedOnInSeconds)
{
    EXPECT_EQ(untilPerformed({"1 FTP_RESPONSE_TIMEOUT = 1"}) + success(), list(true, 0, 1));
    scripted::curl().made = 0;
    EXPECT_EQ(untilPerformed({"1 FTP_RESPONSE_TIMEOUT = 4294967295"}) + success(), list(true, 0, UINT32_MAX));
}

TEST_F(ListingContract, FailureLogsTheCodeBeforeItClosesTheFile)
{
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(untilPerformed() + failure(code), list(false, code));
    }
}

TEST_F(ListingContract, AnOldFileIsEmptiedEvenWhenTheListingFails)
{
    writeFile(request.localPath, "an old listing");
    performGives(CURLE_LOGIN_DENIED);
    list(false, 67);
    EXPECT_EQ("", contentOf(request.localPath));
}

TEST_F(ListingContract, AFileThatCannotBeOpenedEndsItBeforeAnyOption)
{
    request.localPath = path("no-folder/local");
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open " + request.localPath + " wr+ fails",
                            "credentials wiped",
                            "log 4 SFtpClient 77 CurlSFtpResponse::Listsftpdir(): "
                            "0|Listsftpdir():Open local file file failed.|",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, list(false, 2));
}

TEST_F(ListingContract, AFullDiskShowsInTheFirstShortWrite)
{
    request.localPath = "/dev/full";
    scripted::curl().perform = [](scripted::Handle& handle) {
        return handle.receive("twenty bytes of data") == 20 ? CURLE_OK : CURLE_WRITE_ERROR;
    };
    EXPECT_EQ(untilPerformed() + failure(23), list(false, 23));
}

TEST_F(ListingContract, LibcurlGetsACopyOfTheUrl)
{
    list(true, 0);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

TEST_F(ListingContract, AnExceptionWipesTheCredentialsToo)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    Lines lines = journalOf([&] {
        CurlSFtpResponse transfer;
        EXPECT_THROW(transfer.Listsftpdir(request, 90), std::bad_alloc);
    });
    // What is released by an exception goes in the order opposite to its making.
    EXPECT_EQ(Lines({"1 perform", "close", "credentials wiped", "handle 1 cleaned up"}),
              Lines(lines.end() - 4, lines.end()));
}

} // namespace
