#include "harness/Contract.h"

#include "transfer/CurlSFtpResponse.h"

#include <cstdint>

namespace {

class UploadContract : public Contract
{
protected:
    UploadContract()
    {
        request.remotePath = "ftp://server:2121/backup/a.bak";
        writeFile(request.localPath, "seventeen bytes.\n");
    }

    Lines upload(bool expected, int code, uint32_t timeout = 90)
    {
        return journalOf([&] {
            CurlSFtpResponse transfer;
            {
                const memory::Pause pause;
                scripted::curl().names[&transfer] = "the transfer object";
            }
            EXPECT_EQ(expected, transfer.UploadFileToSFtpServer(request, timeout));
            EXPECT_EQ(code, transfer.m_ErrorCode);
        });
    }

    Lines untilPerformed(const std::string& size) const
    {
        return {"handle 1 made",
                "credentials joined",
                "open " + request.localPath + " rb",
                "stat",
                "1 WRITEFUNCTION = GetDataCallback",
                "1 WRITEDATA = the transfer object",
                "1 UPLOAD = 1",
                "1 URL = ftp://server:2121/backup/a.bak",
                "1 PORT = 4000060021",
                "1 USERPWD = operator:correct horse battery",
                "1 FTP_CREATE_MISSING_DIRS = 2",
                "1 CONNECTTIMEOUT = 20",
                "1 NOSIGNAL = 1",
                "1 READDATA = stream",
                "1 INFILESIZE_LARGE = " + size + " (64 bits)",
                "1 perform",
                "credentials wiped"};
    }

    static Lines success() { return {"close", "handle 1 cleaned up"}; }

    static Lines failure(int raw, int reported)
    {
        return {"log 4 SFtpClient 77 CurlSFtpResponse::GetErrString(): 0|Get error string: |" + scripted::text(raw) +
                    "|",
                "log 4 SFtpClient 77 CurlSFtpResponse::UploadFileToSFtpServer(): "
                "0|Perform upload file failed, m_ErrorCodeis |" +
                    std::to_string(reported) + "|, errorString is|" + scripted::text(raw) + "|",
                "close", "handle 1 cleaned up"};
    }
};

TEST_F(UploadContract, SuccessWritesNoRecord) { EXPECT_EQ(untilPerformed("17") + success(), upload(true, 0)); }

TEST_F(UploadContract, AnEmptyFileIsAnnouncedAsEmpty)
{
    writeFile(request.localPath, "");
    EXPECT_EQ(untilPerformed("0") + success(), upload(true, 0));
}

TEST_F(UploadContract, TheSizeHas64Bits)
{
    writeFile(request.localPath, "");
    ASSERT_EQ(0, truncate(request.localPath.c_str(), 53687091200));
    EXPECT_EQ(untilPerformed("53687091200") + success(), upload(true, 0));
}

TEST_F(UploadContract, AFailedTransferIsLoggedAndStillTrue)
{
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(untilPerformed("17") + failure(code, code == 9 ? 78 : code), upload(true, code));
    }
}

TEST_F(UploadContract, TheRecordCarriesTheReportedCodeAndTheTextOfTheRawOne)
{
    performGives(CURLE_REMOTE_ACCESS_DENIED);
    EXPECT_EQ(untilPerformed("17") + failure(9, 78), upload(true, 9));
}

class ResponseOfItsOwn : public CurlSFtpResponse
{
public:
    int GetErrCode() override { return -5; }
    std::string GetErrString() override { return "a text of its own"; }
};

TEST_F(UploadContract, TheRecordAsksTheVirtualInterface)
{
    performGives(CURLE_LOGIN_DENIED);
    Lines lines = journalOf([&] { EXPECT_TRUE(ResponseOfItsOwn().UploadFileToSFtpServer(request, 90)); });
    const std::string record = "log 4 SFtpClient 77 CurlSFtpResponse::UploadFileToSFtpServer(): "
                               "0|Perform upload file failed, m_ErrorCodeis |-5|, errorString is|a text of its own|";
    EXPECT_EQ(Lines({"credentials wiped", record, "close", "handle 1 cleaned up"}),
              Lines(lines.end() - 4, lines.end()));
}

TEST_F(UploadContract, WhatTheServerSendsIsCollected)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        EXPECT_EQ(4U, handle.receive("one "));
        EXPECT_EQ(3U, handle.receive("two"));
        return CURLE_OK;
    };
    CurlSFtpResponse transfer;
    transfer.recvData = "zero ";
    EXPECT_TRUE(transfer.UploadFileToSFtpServer(request, 90));
    EXPECT_EQ("zero one two", transfer.recvData);
}

TEST_F(UploadContract, HoweverMuchItIs)
{
    const std::string block(1024 * 1024, 'x');
    scripted::curl().perform = [&](scripted::Handle& handle) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(block.size(), handle.receive(block));
        }
        return CURLE_OK;
    };
    CurlSFtpResponse transfer;
    EXPECT_TRUE(transfer.UploadFileToSFtpServer(request, 90));
    EXPECT_EQ(3 * block.size(), transfer.recvData.size());
}

TEST_F(UploadContract, TheStreamGivesTheFile)
{
    std::string sent(100, '\0');
    scripted::curl().perform = [&](scripted::Handle& handle) {
        auto* stream = static_cast<FILE*>(handle.pointer(CURLOPT_READDATA));
        sent.resize(fread(sent.data(), 1, sent.size(), stream));
        return CURLE_OK;
    };
    upload(true, 0);
    EXPECT_EQ("seventeen bytes.\n", sent);
}

TEST_F(UploadContract, AFileThatCannotBeOpenedEndsItBeforeAnyOption)
{
    request.localPath = path("missing");
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open " + request.localPath + " rb fails",
                            "credentials wiped",
                            "log 4 SFtpClient 77 CurlSFtpResponse::UploadFileToSFtpServer(): "
                            "0|Open local file file failed.|",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, upload(false, 2));
}

TEST_F(UploadContract, AFileThatCannotBeMeasuredIsClosedAfterTheRecord)
{
    recorded::files().statFails = true;
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open " + request.localPath + " rb",
                            "stat fails",
                            "credentials wiped",
                            "log 4 SFtpClient 77 CurlSFtpResponse::UploadFileToSFtpServer(): "
                            "0|Get the attachment file size failed.|",
                            "close",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, upload(false, 2));
}

TEST_F(UploadContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        scripted::curl().made = 0;
        EXPECT_EQ(untilPerformed("17") + success(), upload(true, 0, timeout));
    }
}

TEST_F(UploadContract, LibcurlGetsACopyOfTheUrl)
{
    upload(true, 0);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

TEST_F(UploadContract, AnExceptionWipesTheCredentialsToo)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    Lines lines = journalOf([&] {
        CurlSFtpResponse transfer;
        EXPECT_THROW(transfer.UploadFileToSFtpServer(request, 90), std::bad_alloc);
    });
    // What is released by an exception goes in the order opposite to its making.
    EXPECT_EQ(Lines({"1 perform", "close", "credentials wiped", "handle 1 cleaned up"}),
              Lines(lines.end() - 4, lines.end()));
}

} // namespace
