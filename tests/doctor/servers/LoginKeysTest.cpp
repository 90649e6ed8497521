// What the doctor expects where a key of this machine, and not the password, lets a user in.
#include "harness/Examined.h"
#include "harness/Truth.h"
#include "servers/Daemons.h"
#include "support/CurlRelease.h"
#include "support/Process.h"
#include "support/SetVariable.h"

#include <filesystem>
#include <regex>

namespace {

// libssh2 1.10 signs with SHA-1, which OpenSSH no longer takes by itself.
ProcessSetup takingKeys(const std::string& folder)
{
    ProcessSetup daemon = opensshSftp(folder);
    const std::string path = folder + "/daemon.conf";
    const std::string keys = "PubkeyAuthentication yes\nAuthorizedKeysFile /run/served/authorized\nStrictModes no\n"
                             "PubkeyAcceptedAlgorithms +ssh-rsa";
    writeFile(path, std::regex_replace(contentOf(path), std::regex("PubkeyAuthentication no"), keys));
    return daemon;
}

std::vector<Server> serversTakingKeys()
{
    Server server = sshServers().back(); // OpenSSH
    server.configure = takingKeys;
    return {server};
}

class LoginKeys : public Daemons
{
protected:
    void SetUp() override
    {
        Daemons::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        std::filesystem::create_directories(local("home/.ssh"));
        const std::string key = local("home/.ssh/id_rsa");
        ASSERT_EQ(0, runProgram({{"ssh-keygen", "-q", "-t", "rsa", "-m", "PEM", "-N", "", "-f", key}}).status);
        keep("authorized", contentOf(key + ".pub"));
        request.password = "wrong";
    }

    const SetVariable m_home{"HOME", local("home")};
};

// With a password that no login needs.
TEST_P(LoginKeys, LetSFtpClientInButNoSession)
{
    doctor::Question question = ask();
    question.hostKeySha256 = examine(question).hostKey.fingerprint;
    const unsigned before = connections();
    const std::vector<doctor::Prediction> predictions = predict(examine(question));
    EXPECT_EQ(4U, connections() - before);
    EXPECT_EQ("WWWWWW", outlooksOf(predictions));
    EXPECT_EQ("FFFFFF", outlooksOf(ofSession(predictions)));
    const std::string said = isCurl814() ? "Login denied" : "Authentication failure";
    EXPECT_EQ("the server refuses the password (" + said +
                  "); SFtpClient logs in with a key of this machine, and a session with the password alone",
              predictions.front().session.reason);
    const auto file = [this](const std::string& name, const std::string& text) { fill(name, text); };
    expectTruth(predictions, truthOf(question, local("scratch"), file));
    expectTruth(ofSession(predictions), truthOfSession(question, local("scratch"), file));
}

} // namespace

INSTANTIATE_TEST_SUITE_P(OfDebian, LoginKeys, testing::ValuesIn(serversTakingKeys()), idOf);
