#include "harness/Journal.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <boost/make_shared.hpp>
#include <curl/curl.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// What the client below the facade is told to answer.
int code = 0;
bool responds = true;
bool exists = true;

class NotingResponse : public ISFtpResponse
{
public:
    ~NotingResponse() override { journal::note("response released"); }

    int GetErrCode() override
    {
        journal::note("GetErrCode");
        return code;
    }

    std::string GetErrString() override
    {
        journal::note("GetErrString");
        return "a text";
    }
};

class NotingClient : public ISFtpClient
{
public:
    ~NotingClient() override { journal::note("client released"); }

    int TestSConnect(const SFtpRequest&, uint32_t) override { return 0; }

    boost::shared_ptr<ISFtpResponse> Listsftpdir(const SFtpRequest& request, uint32_t timeout) override
    {
        return note("Listsftpdir", request, timeout);
    }

    boost::shared_ptr<ISFtpResponse> DownLoadSFtpFile(const SFtpRequest& request, uint32_t timeout) override
    {
        return note("DownLoadSFtpFile", request, timeout);
    }

    boost::shared_ptr<ISFtpResponse> ReNameSFtpFile(const SFtpRequest& request, uint32_t timeout) override
    {
        return note("ReNameSFtpFile", request, timeout);
    }

    boost::shared_ptr<ISFtpResponse> DelSFtpFile(const SFtpRequest& request, uint32_t timeout) override
    {
        return note("DelSFtpFile", request, timeout);
    }

    boost::shared_ptr<ISFtpResponse> UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout) override
    {
        return note("UploadFileToSFtpServer", request, timeout);
    }

private:
    static boost::shared_ptr<ISFtpResponse> note(const char* name, const SFtpRequest& request, uint32_t timeout)
    {
        journal::note(std::string(name) + " " + request.remoteFileName + " " + std::to_string(timeout));
        return responds ? boost::make_shared<NotingResponse>() : boost::shared_ptr<ISFtpResponse>();
    }
};

} // namespace

ISFtpClient* ISFtpClient::GetInstance()
{
    journal::note("client made");
    return exists ? new NotingClient : nullptr;
}

// The size check finds no file, which lets the download go on.
extern "C" CURLcode curl_easy_perform(CURL* /*handle*/) { return CURLE_REMOTE_FILE_NOT_FOUND; }

namespace {

struct Operation
{
    const char* name;
    int (SFtpClient::*call)(const SFtpRequest&, std::string&);
};

const Operation kOperations[] = {
    {"Listsftpdir", &SFtpClient::Listsftpdir},
    {"DownLoadSFtpFile", &SFtpClient::DownLoadSFtpFile},
    {"ReNameSFtpFile", &SFtpClient::ReNameSFtpFile},
    {"DelSFtpFile", &SFtpClient::DelSFtpFile},
    {"UploadFileToSFtpServer", &SFtpClient::UploadFileToSFtpServer},
};

class FacadeCalls : public testing::Test
{
protected:
    FacadeCalls()
    {
        code = 0;
        responds = true;
        exists = true;
        request.remoteFileName = "this request";
        journal::clear();
    }

    // What the client and the response were asked, without records.
    static Lines callsOf(const std::function<void()>& piece)
    {
        piece();
        Lines calls;
        for (const std::string& line : journal::take()) {
            if (line.rfind("log ", 0) != 0) {
                calls.push_back(line);
            }
        }
        return calls;
    }

    SFtpRequest request;
    std::string errorText = "as it was";
};

TEST_F(FacadeCalls, OneClientForAFacadesWholeLife)
{
    EXPECT_EQ(Lines({"client made", "client released"}), callsOf([] { const SFtpClient facade; }));
}

TEST_F(FacadeCalls, NoClientIsReleasedWhereNoneWasMade)
{
    exists = false;
    EXPECT_EQ(Lines({"client made"}), callsOf([] { const SFtpClient facade; }));
}

TEST_F(FacadeCalls, SuccessAsksForTheCodeOnce)
{
    SFtpClient facade;
    journal::clear();
    for (const Operation& operation : kOperations) {
        EXPECT_EQ(Lines({std::string(operation.name) + " this request 90", "GetErrCode", "response released"}),
                  callsOf([&] { EXPECT_EQ(0, (facade.*operation.call)(request, errorText)); }));
    }
    EXPECT_EQ("as it was", errorText);
}

TEST_F(FacadeCalls, FailureAsksForTextAndCodeTwice)
{
    SFtpClient facade;
    journal::clear();
    for (const int failure : {-1, 1, 7, 78}) {
        code = failure;
        for (const Operation& operation : kOperations) {
            errorText = "as it was";
            EXPECT_EQ(Lines({std::string(operation.name) + " this request 90", "GetErrCode", "GetErrString",
                             "GetErrString", "GetErrCode", "response released"}),
                      callsOf([&] { EXPECT_EQ(failure, (facade.*operation.call)(request, errorText)); }));
            EXPECT_EQ("a text", errorText);
        }
    }
}

TEST_F(FacadeCalls, AnEmptyResponseIsAskedNothing)
{
    responds = false;
    SFtpClient facade;
    journal::clear();
    for (const Operation& operation : kOperations) {
        EXPECT_EQ(Lines({std::string(operation.name) + " this request 90"}),
                  callsOf([&] { EXPECT_EQ(-1, (facade.*operation.call)(request, errorText)); }));
    }
    EXPECT_EQ("as it was", errorText);
}

} // namespace
