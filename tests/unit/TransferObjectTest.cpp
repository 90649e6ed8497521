#include "transfer/CurlSFtpResponse.h"

#include "harness/Memory.h"
#include "harness/RecordingHost.h"
#include "harness/ScriptedCurl.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using recording::takeRecords;
using scripted::curl;

namespace {

using Lines = std::vector<std::string>;

class TransferObject : public testing::Test
{
protected:
    TransferObject()
    {
        recording::reset();
        curl() = scripted::Curl();
    }
    ~TransferObject() override { curl() = scripted::Curl(); }

    static std::string textOf(int code)
    {
        CurlSFtpResponse transfer;
        transfer.m_ErrorCode = code;
        return transfer.GetErrString();
    }
};

TEST_F(TransferObject, StartsOut)
{
    const CurlSFtpResponse transfer;
    EXPECT_EQ(0U, transfer.statusCode);
    EXPECT_EQ("", transfer.statusText);
    EXPECT_EQ(2, transfer.m_ErrorCode);
    EXPECT_EQ("", transfer.recvData);
    EXPECT_TRUE(transfer.headers.empty());
    EXPECT_NE(nullptr, transfer.curlHandle);
    EXPECT_EQ("", transfer.cert);
    EXPECT_EQ(1U, curl().opened);
    EXPECT_TRUE(takeRecords().empty());
}

TEST_F(TransferObject, ReportsItsFirstCodeBeforeAnyTransfer) { EXPECT_EQ(2, CurlSFtpResponse().GetErrCode()); }

TEST_F(TransferObject, ReportsARefusedAccessAsAMissingFileAndEveryOtherCodeAsItIs)
{
    CurlSFtpResponse transfer;
    for (int code = -1; code < 1000; ++code) {
        transfer.m_ErrorCode = code;
        EXPECT_EQ(code == 9 ? 78 : code, transfer.GetErrCode());
        EXPECT_EQ(code, transfer.m_ErrorCode);
    }
    EXPECT_TRUE(takeRecords().empty());
}

TEST_F(TransferObject, GivesTheTextOfTheCode)
{
    EXPECT_EQ("No error", textOf(0));
    EXPECT_EQ(Lines{"4 SFtpClient 77 CurlSFtpResponse::GetErrString(): 0|Get error string: |No error|"}, takeRecords());
    EXPECT_EQ("Failed initialization", textOf(2));
    EXPECT_EQ("Timeout was reached", textOf(28));
    EXPECT_EQ("Unknown error", textOf(9999));
    EXPECT_EQ((std::vector<int>{0, 2, 28, 9999}), curl().asked);
}

TEST_F(TransferObject, GivesTheTextOfTheCodeThatLibcurlGave)
{
    EXPECT_EQ("Access denied to remote resource", textOf(9));
    EXPECT_EQ(std::vector<int>{9}, curl().asked);
}

TEST_F(TransferObject, HasATextOfItsOwnWhereLibcurlHasNone)
{
    curl().knowsTexts = false;
    EXPECT_EQ("UnKown error", textOf(7));
    EXPECT_EQ(Lines{"4 SFtpClient 77 CurlSFtpResponse::GetErrString(): 0|Get error string: |UnKown error|"},
              takeRecords());
}

TEST_F(TransferObject, IsReadThroughItsInterface)
{
    const std::unique_ptr<ISFtpResponse> response(new CurlSFtpResponse);
    static_cast<CurlSFtpResponse&>(*response).m_ErrorCode = 9;
    EXPECT_EQ(78, response->GetErrCode());
    EXPECT_EQ("Access denied to remote resource", response->GetErrString());
}

TEST_F(TransferObject, CleansUpItsHandleOnceThroughTheInterface)
{
    auto* transfer = new CurlSFtpResponse;
    std::unique_ptr<ISFtpResponse> response(transfer);
    const std::vector<void*> handle{transfer->curlHandle};
    EXPECT_TRUE(curl().cleanedUp.empty());
    response.reset();
    EXPECT_EQ(handle, curl().cleanedUp);
}

TEST_F(TransferObject, CleansUpNoHandleThatWasTakenAway)
{
    {
        CurlSFtpResponse transfer;
        transfer.curlHandle = nullptr;
    }
    EXPECT_TRUE(curl().cleanedUp.empty());
}

TEST_F(TransferObject, CannotBeMadeWithoutAHandle)
{
    curl().givesHandles = false;
    const memory::Watch watch;
    try {
        const CurlSFtpResponse transfer;
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("curl initialize failed.", error.what());
    }
    EXPECT_EQ(0U, memory::livingBlocks());
    EXPECT_TRUE(curl().cleanedUp.empty());
}

TEST_F(TransferObject, AppendsReceivedData)
{
    CurlSFtpResponse transfer;
    transfer.RecieveData("");
    EXPECT_EQ("", transfer.recvData);
    transfer.RecieveData("one");
    transfer.RecieveData("");
    transfer.RecieveData(std::string(" \0two", 5));
    EXPECT_EQ(std::string("one \0two", 8), transfer.recvData);
    EXPECT_EQ("", transfer.statusText);
    EXPECT_TRUE(transfer.headers.empty());
    EXPECT_EQ(2, transfer.m_ErrorCode);
    EXPECT_EQ(0U, transfer.statusCode);
}

} // namespace
