// What stays of a password in memory: nothing, whatever comes of a call. The scripted libcurl keeps no copy, so all
// copies would be the session's own.
#include "OperationCalls.h"
#include "SessionContract.h"

#include "server/Certificates.h"

#include <new>
#include <stdexcept>
#include <string>

namespace {

class SessionSecrets : public SessionContract
{
protected:
    // Each call once; after each, no block that is alive holds the password, and none was freed with it.
    void expectNoneLeft()
    {
        for (const OperationCall& call : operationCalls()) {
            const memory::Watch watch(kPassword);
            SFtpSession session(options);
            try {
                call.run(session, request, errorText);
            } catch (const std::exception&) {
                ++exceptions;
            }
            const memory::Pause pause;
            EXPECT_FALSE(memory::holdsSecret()) << call;
            EXPECT_EQ(0U, memory::freedWithSecret()) << call;
            EXPECT_LT(0U, memory::livingBlocks()) << "the watch has seen nothing of " << call;
        }
    }

    // A secret of the options, also when the constructor refuses them.
    void expectToGoWithTheSession(const std::string& secret)
    {
        const memory::Watch watch(secret.c_str());
        {
            SFtpSession session(options);
            EXPECT_TRUE(memory::holdsSecret());
        }
        EXPECT_FALSE(memory::holdsSecret());
        options.maxConnections = 0;
        EXPECT_THROW(SFtpSession{options}, std::invalid_argument);
        EXPECT_EQ(0U, memory::freedWithSecret());
        options.maxConnections = 1;
    }

    unsigned exceptions = 0;
};

} // namespace

TEST_F(SessionSecrets, AreGoneAfterSuccess) { expectNoneLeft(); }

TEST_F(SessionSecrets, AreGoneAfterARefusedLoginAndAFailedConnection)
{
    for (const CURLcode code : {CURLE_LOGIN_DENIED, CURLE_COULDNT_CONNECT}) {
        performGives(code);
        expectNoneLeft();
    }
}

TEST_F(SessionSecrets, AreGoneAfterAnException)
{
    const std::runtime_error own("the host's own");
    options.progress = [&own](const TransferProgress&) { throw own; };
    expectNoneLeft();
    EXPECT_LT(0U, exceptions);
    options.progress = nullptr;
    scripted::curl().lists = false;
    expectNoneLeft();
}

TEST_F(SessionSecrets, AreGoneAfterARequestThatIsRefused)
{
    request.port = 65536;
    for (const OperationCall& call : operationCalls()) {
        journalOfCall(call.run, CURLE_URL_MALFORMAT);
    }
}

// Those of the options stay as long as the session.
TEST_F(SessionSecrets, OfTheOptionsGoWithTheSession)
{
    const testserver::Certificate client = testserver::makeSelfSigned();
    // What follows the first line, which every key has.
    const std::string secret = client.privateKeyPem.substr(client.privateKeyPem.find('\n') + 1, 32);
    ASSERT_EQ(32U, secret.size());
    const SessionOptions plain = options;
    options.clientCertificate = client.certificatePem;
    options.clientKey = client.privateKeyPem;
    expectToGoWithTheSession(secret);
    options = plain;
    options.proxy = "http://user:" + secret + "@proxy:3128";
    expectToGoWithTheSession(secret);
}
