#include "ScriptedWalk.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <vector>

namespace {

using memory::Shortage;

constexpr int kNoClient = -1001;
constexpr int kNoResponse = -1002;

struct ReleaseClient
{
    void operator()(ISFtpClient* client) const { ISFtpClient::ReleaseInstance(client); }
};
using Client = std::unique_ptr<ISFtpClient, ReleaseClient>;

template <int (SFtpClient::*Call)(const SFtpRequest&, std::string&)>
int throughFacade(const SFtpRequest& request)
{
    std::string errorText = "as it was";
    SFtpClient facade;
    const int result = (facade.*Call)(request, errorText);
    const memory::Pause pause;
    // The facade reports a refused access as a missing file, but keeps its text.
    const int textOf = result == CURLE_REMOTE_FILE_NOT_FOUND ? CURLE_REMOTE_ACCESS_DENIED : result;
    EXPECT_EQ(result > 0 ? scripted::text(textOf) : "as it was", errorText);
    return result;
}

template <boost::shared_ptr<ISFtpResponse> (ISFtpClient::*Call)(const SFtpRequest&, uint32_t)>
int throughClient(const SFtpRequest& request)
{
    const Client client(ISFtpClient::GetInstance());
    if (!client) {
        return kNoClient;
    }
    const boost::shared_ptr<ISFtpResponse> response = (client.get()->*Call)(request, 90);
    return response ? response->GetErrCode() : kNoResponse;
}

int connectionTest(const SFtpRequest& request)
{
    const Client client(ISFtpClient::GetInstance());
    return client ? client->TestSConnect(request, 90) : kNoClient;
}

struct Operation
{
    const char* name;
    int (*run)(const SFtpRequest&);
    int refused = CURLE_REMOTE_FILE_NOT_FOUND; ///< its result where libcurl's is 9
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

const Operation kFacadeOperations[] = {
    {"FacadeList", throughFacade<&SFtpClient::Listsftpdir>},
    {"FacadeDownload", throughFacade<&SFtpClient::DownLoadSFtpFile>, -1},
    {"FacadeRename", throughFacade<&SFtpClient::ReNameSFtpFile>},
    {"FacadeDelete", throughFacade<&SFtpClient::DelSFtpFile>},
    {"FacadeUpload", throughFacade<&SFtpClient::UploadFileToSFtpServer>},
};

const Operation kClientOperations[] = {
    {"ClientList", throughClient<&ISFtpClient::Listsftpdir>},
    {"ClientDownload", throughClient<&ISFtpClient::DownLoadSFtpFile>},
    {"ClientRename", throughClient<&ISFtpClient::ReNameSFtpFile>},
    {"ClientDelete", throughClient<&ISFtpClient::DelSFtpFile>},
    {"ClientUpload", throughClient<&ISFtpClient::UploadFileToSFtpServer>},
};

const Operation kConnectionTest = {"ClientConnectionTest", connectionTest, CURLE_REMOTE_ACCESS_DENIED};

// What an operation may come to when one need goes unmet and all after it are met. The facade's -1 is a client or a
// response that was not made, or a size check that refused.
//
// Success is right where an operation does not depend on what was lost: the words of a record, which the stream drops
// by itself, and the kind of a client certificate that nobody gives (libcurl's default is the same).
//
// A login that libcurl had no memory to copy goes unnoticed: the transfer runs without it, and the server
// refuses.
const std::map<std::string, std::set<int>> kOutcomes = {
    {"operator new", {kThrown, kNoClient, kNoResponse, -1, CURLE_FAILED_INIT, CURLE_WRITE_ERROR}},
    {"a record", {kThrown}},
    {"a record's text", {CURLE_OK}},
    {"fopen", {CURLE_FAILED_INIT}},
    {"curl_easy_init", {kNoResponse, -1}},
    {"curl_slist_append", {kThrown}},
    {"URL", {CURLE_URL_MALFORMAT, -1}},
    {"USERPWD", {CURLE_LOGIN_DENIED, -1}},
    {"SSLCERTTYPE", {CURLE_OK}},
    {"curl_easy_perform", {CURLE_OUT_OF_MEMORY, -1}},
    {"BIO_new_mem_buf", {CURLE_SSL_CACERT_BADFILE}},
    {"PEM_read_bio_X509", {CURLE_SSL_CACERT_BADFILE}},
    {"X509_STORE_add_cert", {CURLE_FAILED_INIT}},
};

class ScriptedOperations : public ScriptedWalk, public testing::WithParamInterface<Operation>
{
};

TEST_P(ScriptedOperations, OneFailedAllocationEndsAsExpected)
{
    walk(GetParam().run, CURLE_OK, Shortage::Once, [this](const Outcome& outcome) {
        EXPECT_EQ(1U, kOutcomes.at(outcome.who).count(outcome.result)) << "result " << nameOf(outcome.result);
        if (outcome.result != CURLE_OK && outcome.result != kThrown) {
            expectTold(outcome);
        }
    });
}

// Each failure is logged, and no record can be made either: std::bad_alloc propagates, and nothing else. Only
// the text of the very last record is lost without consequences.
TEST_P(ScriptedOperations, ExhaustedMemoryThrows)
{
    unsigned successes = 0;
    walk(GetParam().run, CURLE_OK, Shortage::ForGood, [&](const Outcome& outcome) {
        if (outcome.result == CURLE_OK) {
            ++successes;
            EXPECT_STREQ("a record's text", outcome.who);
        } else {
            EXPECT_EQ(nameOf(kThrown), nameOf(outcome.result));
            EXPECT_EQ(0U, successes) << "an earlier shortage was survived, a later one not";
        }
    });
}

// A failure that has another cause stays a failure, whichever allocation of its records or its text fails.
TEST_P(ScriptedOperations, AFailureIsNeverTurnedIntoSuccess)
{
    performGives(CURLE_REMOTE_ACCESS_DENIED);
    const int usual = GetParam().refused;
    walk(GetParam().run, usual, Shortage::Once, [&](const Outcome& outcome) {
        if (outcome.who == std::string("a record's text")) {
            EXPECT_EQ(nameOf(usual), nameOf(outcome.result));
        }
        EXPECT_NE(CURLE_OK, outcome.result);
    });
    walk(GetParam().run, usual, Shortage::ForGood, [&](const Outcome& outcome) {
        EXPECT_TRUE(outcome.result == kThrown || outcome.result == usual) << nameOf(outcome.result);
    });
}

std::string nameOfCase(const testing::TestParamInfo<Operation>& parameter) { return parameter.param.name; }

INSTANTIATE_TEST_SUITE_P(Each, ScriptedOperations, testing::ValuesIn(kFacadeOperations), nameOfCase);
INSTANTIATE_TEST_SUITE_P(EachOfTheClient, ScriptedOperations, testing::ValuesIn(kClientOperations), nameOfCase);
INSTANTIATE_TEST_SUITE_P(NoResponse, ScriptedOperations, testing::Values(kConnectionTest), nameOfCase);

class ScriptedResponses : public ScriptedOperations
{
};

TEST_P(ScriptedResponses, AreEmptyOnlyIfTheyCouldNotBeMade)
{
    std::vector<int> results;
    walk(GetParam().run, CURLE_OK, Shortage::Once, [&](const Outcome& outcome) {
        results.push_back(outcome.result);
        if (outcome.result == kNoResponse) {
            EXPECT_NE(std::string::npos, outcome.journal.back().find("Create  CurlHttpClient object failed."));
        }
    });
    // The client; then the response, its libcurl handle and the shared pointer's own block.
    const std::vector<int> beginning = {kNoClient, kNoResponse, kNoResponse, kNoResponse};
    ASSERT_LT(beginning.size(), results.size());
    EXPECT_EQ(beginning, std::vector<int>(results.begin(), results.begin() + 4));
    EXPECT_EQ(0, std::count(results.begin() + 4, results.end(), kNoResponse));
}

INSTANTIATE_TEST_SUITE_P(Each, ScriptedResponses, testing::ValuesIn(kClientOperations), nameOfCase);

} // namespace
