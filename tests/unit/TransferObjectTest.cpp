#include "transfer/CurlSFtpResponse.h"

#include "support/Codes.h"
#include "support/Journal.h"
#include "support/Memory.h"
#include "support/RecordingHost.h"
#include "support/ScriptedCurl.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>

using recording::takeRecords;
using scripted::curl;

namespace {

class TransferObject : public testing::Test
{
protected:
    TransferObject()
    {
        recording::reset();
        curl() = scripted::Curl();
    }
    // Other tests go by a libcurl that has handles.
    ~TransferObject() override { curl() = scripted::Curl(); }

    static std::string textOf(int code)
    {
        CurlSFtpResponse transfer;
        transfer.m_ErrorCode = code;
        return transfer.GetErrString();
    }
};

TEST_F(TransferObject, StartsWithDefaults)
{
    const CurlSFtpResponse transfer;
    EXPECT_EQ(0U, transfer.statusCode);
    EXPECT_EQ("", transfer.statusText);
    EXPECT_EQ(CURLE_FAILED_INIT, transfer.m_ErrorCode);
    EXPECT_EQ("", transfer.recvData);
    EXPECT_TRUE(transfer.headers.empty());
    EXPECT_NE(nullptr, transfer.curlHandle);
    EXPECT_EQ("", transfer.cert);
    EXPECT_TRUE(sameLines({"handle 1 made"}, journal::take()));
}

TEST_F(TransferObject, ReportsItsFirstCodeBeforeAnyTransfer)
{
    EXPECT_EQ(CURLE_FAILED_INIT, CurlSFtpResponse().GetErrCode());
}

TEST_F(TransferObject, ReportsARefusedAccessAsAMissingFileAndEveryOtherCodeUnchanged)
{
    CurlSFtpResponse transfer;
    for (int code = -1; code < 1000; ++code) {
        transfer.m_ErrorCode = code;
        const int reported = code == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : code;
        EXPECT_EQ(nameOf(reported), nameOf(transfer.GetErrCode()));
        EXPECT_EQ(code, transfer.m_ErrorCode);
    }
    EXPECT_TRUE(sameLines({}, takeRecords()));
}

TEST_F(TransferObject, ReturnsTheTextOfLibcurlsCodeAndLogsIt)
{
    for (const int code : {int{CURLE_OK}, int{CURLE_REMOTE_ACCESS_DENIED}, 9999}) {
        SCOPED_TRACE(nameOf(code));
        curl().asked.clear();
        EXPECT_EQ(scripted::text(code), textOf(code));
        EXPECT_EQ(std::vector<int>{code}, curl().asked);
        EXPECT_TRUE(sameLines(
            {"4 SFtpClient 77 CurlSFtpResponse::GetErrString(): 0|Get error string: |" + scripted::text(code) + "|"},
            takeRecords()));
    }
}

TEST_F(TransferObject, HasItsOwnTextIfLibcurlHasNone)
{
    curl().texts = false;
    EXPECT_EQ("UnKown error", textOf(CURLE_COULDNT_CONNECT));
    EXPECT_TRUE(sameLines({"4 SFtpClient 77 CurlSFtpResponse::GetErrString(): 0|Get error string: |UnKown error|"},
                          takeRecords()));
}

TEST_F(TransferObject, IsReadAndCleanedUpOnceThroughItsInterface)
{
    std::unique_ptr<ISFtpResponse> response(new CurlSFtpResponse);
    static_cast<CurlSFtpResponse&>(*response).m_ErrorCode = CURLE_REMOTE_ACCESS_DENIED;
    EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, response->GetErrCode());
    EXPECT_EQ(scripted::text(CURLE_REMOTE_ACCESS_DENIED), response->GetErrString());
    takeRecords();
    response.reset();
    EXPECT_TRUE(sameLines({"handle 1 cleaned up"}, journal::take()));
}

TEST_F(TransferObject, DoesNotCleanUpAHandleThatWasTakenAway)
{
    CURL* handle = nullptr;
    {
        CurlSFtpResponse transfer;
        handle = std::exchange(transfer.curlHandle, nullptr);
    }
    EXPECT_TRUE(sameLines({"handle 1 made"}, journal::take()));
    curl_easy_cleanup(handle);
}

TEST_F(TransferObject, CannotBeMadeWithoutAHandle)
{
    curl().handles = false;
    const memory::Watch watch;
    try {
        const CurlSFtpResponse transfer;
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("curl initialize failed.", error.what());
    }
    const memory::Pause pause;
    EXPECT_EQ(0U, memory::livingBlocks());
    EXPECT_TRUE(sameLines({"curl_easy_init gives nothing"}, journal::take()));
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
    EXPECT_EQ(CURLE_FAILED_INIT, transfer.m_ErrorCode);
    EXPECT_EQ(0U, transfer.statusCode);
}

} // namespace
