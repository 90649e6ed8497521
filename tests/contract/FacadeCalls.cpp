#include "support/Codes.h"
#include "support/Lines.h"
#include "support/ScriptedCurl.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <boost/make_shared.hpp>

#include <functional>
#include <string>
#include <utility>

namespace {

// The calls to the client and the response below the facade, and what they return.
Lines calls;
int code = 0;
bool responds = true;
bool exists = true;

class NotingResponse : public ISFtpResponse
{
public:
    ~NotingResponse() override { calls.push_back("response released"); }

    int GetErrCode() override
    {
        calls.push_back("GetErrCode");
        return code;
    }

    std::string GetErrString() override
    {
        calls.push_back("GetErrString");
        return "a text";
    }
};

class NotingClient : public ISFtpClient
{
public:
    ~NotingClient() override { calls.push_back("client released"); }

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
        calls.push_back(std::string(name) + " " + request.remoteFileName + " " + std::to_string(timeout));
        return responds ? boost::make_shared<NotingResponse>() : boost::shared_ptr<ISFtpResponse>();
    }
};

} // namespace

ISFtpClient* ISFtpClient::GetInstance()
{
    calls.push_back("client made");
    return exists ? new NotingClient : nullptr;
}

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
        // The size check finds no file, which lets the download go on.
        scripted::curl() = {};
        scripted::curl().perform = [](scripted::Handle&) { return CURLE_REMOTE_FILE_NOT_FOUND; };
        calls.clear();
    }

    static Lines callsOf(const std::function<void()>& piece)
    {
        piece();
        return std::exchange(calls, {});
    }

    SFtpRequest request;
    std::string errorText = "as it was";
};

TEST_F(FacadeCalls, OneClientForAFacadesWholeLife)
{
    EXPECT_TRUE(sameLines({"client made", "client released"}, callsOf([] { const SFtpClient facade; })));
}

TEST_F(FacadeCalls, ReleasesNoClientIfNoneWasMade)
{
    exists = false;
    EXPECT_TRUE(sameLines({"client made"}, callsOf([] { const SFtpClient facade; })));
}

TEST_F(FacadeCalls, SuccessAsksForTheCodeOnce)
{
    SFtpClient facade;
    calls.clear();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        EXPECT_TRUE(sameLines({std::string(operation.name) + " this request 90", "GetErrCode", "response released"},
                              callsOf([&] { EXPECT_EQ(CURLE_OK, (facade.*operation.call)(request, errorText)); })));
    }
    EXPECT_EQ("as it was", errorText);
}

TEST_F(FacadeCalls, FailureAsksForTextAndCodeTwice)
{
    SFtpClient facade;
    calls.clear();
    for (const int failure : {-1, int{CURLE_COULDNT_CONNECT}, int{CURLE_REMOTE_FILE_NOT_FOUND}}) {
        code = failure;
        for (const Operation& operation : kOperations) {
            SCOPED_TRACE(operation.name + (" " + nameOf(failure)));
            errorText = "as it was";
            EXPECT_TRUE(sameLines({std::string(operation.name) + " this request 90", "GetErrCode", "GetErrString",
                                   "GetErrString", "GetErrCode", "response released"},
                                  callsOf([&] { EXPECT_EQ(failure, (facade.*operation.call)(request, errorText)); })));
            EXPECT_EQ("a text", errorText);
        }
    }
}

TEST_F(FacadeCalls, CallsNothingOnAnEmptyResponse)
{
    responds = false;
    SFtpClient facade;
    calls.clear();
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        EXPECT_TRUE(sameLines({std::string(operation.name) + " this request 90"},
                              callsOf([&] { EXPECT_EQ(-1, (facade.*operation.call)(request, errorText)); })));
    }
    EXPECT_EQ("as it was", errorText);
}

} // namespace
