#include "harness/Truth.h"

#include "support/Codes.h"
#include "support/TemporaryFolder.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>
#include <SFtpSession.h>

#include <gtest/gtest.h>

namespace {

using doctor::Outlook;
using doctor::Prediction;
using doctor::Question;

SFtpRequest forFile(const Question& question, const std::string& name, const std::string& local)
{
    SFtpRequest request = question.request;
    request.remotePath += name;
    request.localPath = local;
    return request;
}

SFtpRequest forCommand(const Question& question, const std::string& name, const std::string& newName = {})
{
    SFtpRequest request = question.request;
    request.remotePath = question.commandUrl;
    request.remoteFileName = name;
    request.localPath = newName;
    return request;
}

// libcurl mistakes a failure of TLS on a data connection for one of EPSV, and clear text in place of a handshake for a
// reply: which code it reports is a race.
bool isDataFailure(int code) { return code == 13 || code == 35 || code == 56 || code == 60; }
bool isHandshakeFailure(int code) { return code == 8 || code == 35; }

bool mayStandFor(int code, int truth)
{
    return code == truth || (isDataFailure(code) && isDataFailure(truth)) ||
           (isHandshakeFailure(code) && isHandshakeFailure(truth));
}

/// The codes of the six operations, in the order of the predictions; `test` is the client's own.
template <typename Client>
std::vector<int> codesOf(Client& client, const Question& question, const std::string& scratch,
                         const std::function<void(const std::string&, const std::string&)>& keep,
                         const std::function<int()>& test)
{
    std::string text;
    keep("fetched.bak", "the content");
    keep("old.bak", "the content");
    keep("gone.bak", "the content");
    const int download = client.DownLoadSFtpFile(forFile(question, "fetched.bak", scratch), text);
    const int rename = client.ReNameSFtpFile(forCommand(question, "old.bak", "new.bak"), text);
    const int remove = client.DelSFtpFile(forCommand(question, "gone.bak"), text);
    SFtpRequest listing = question.request;
    listing.localPath = scratch;
    const int list = client.Listsftpdir(listing, text);
    const int tested = test();
    // The last, because it makes a missing directory.
    writeFile(scratch, "the content");
    const int upload = client.UploadFileToSFtpServer(forFile(question, "sent.bak", scratch), text);
    return {download, upload, rename, remove, list, tested};
}

} // namespace

std::vector<int> truthOf(const Question& question, const std::string& scratch,
                         const std::function<void(const std::string&, const std::string&)>& keep)
{
    SFtpClient client;
    return codesOf(client, question, scratch, keep,
                   [&question] { return ISFtpClient::CreateClient()->TestSConnect(question.request, 90); });
}

std::vector<int> truthOfSession(const Question& question, const std::string& scratch,
                                const std::function<void(const std::string&, const std::string&)>& keep)
{
    SessionOptions options;
    options.knownHostsFile = question.knownHostsFile;
    options.hostKeySha256 = question.hostKeySha256;
    SFtpSession session(options);
    std::string text;
    return codesOf(session, question, scratch, keep, [&] { return session.TestSConnect(question.request, text); });
}

std::vector<Prediction> ofSession(const std::vector<Prediction>& predictions)
{
    std::vector<Prediction> those;
    for (const Prediction& each : predictions) {
        those.push_back({each.session, "session's " + each.operation, {}});
    }
    return those;
}

void expectTruth(const std::vector<Prediction>& predictions, const std::vector<int>& truth)
{
    ASSERT_EQ(truth.size(), predictions.size());
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const Prediction& prediction = predictions[i];
        EXPECT_NE(Outlook::Unknown, prediction.outlook) << prediction.operation << ": " << prediction.reason;
        EXPECT_EQ(truth[i] == 0, prediction.outlook == Outlook::Works)
            << prediction.operation << " gives " << nameOf(truth[i]) << "; " << prediction.reason;
        if (prediction.code) {
            EXPECT_TRUE(mayStandFor(*prediction.code, truth[i]))
                << prediction.operation << " gives " << nameOf(truth[i]) << ", not " << nameOf(*prediction.code) << "; "
                << prediction.reason;
        }
        if (prediction.outlook == Outlook::Fails) {
            EXPECT_NE("", prediction.reason) << prediction.operation;
            EXPECT_NE("", prediction.remedy) << prediction.operation;
        }
    }
}
