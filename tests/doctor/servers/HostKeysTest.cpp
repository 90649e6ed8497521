// What the doctor expects of a session that compares an SSH server's key, and whether that is true.
#include "doctor/Findings.h"
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"
#include "harness/Golden.h"
#include "harness/Truth.h"
#include "servers/Daemons.h"
#include "support/Process.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace {

using doctor::Question;
using doctor::Report;

// Nobody's, as a line of a file of known hosts goes on behind the host.
constexpr char kEd25519[] = " ssh-ed25519 AAAAC3NzaC1lZDI1NTE5AAAAIAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";

class HostKeys : public Daemons
{
protected:
    void SetUp() override
    {
        Daemons::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        question = ask();
        const Report seen = examine(question);
        line = seen.hostKey.line;
        fingerprint = seen.hostKey.fingerprint;
        host = line.substr(0, line.find(' '));
    }

    /// Lets the session know this file.
    void knowing(const std::string& text)
    {
        question.knownHostsFile = local("known_hosts");
        writeFile(question.knownHostsFile, text);
    }

    /// Examines, and expects this code of all operations of a session, which are then run. SFtpClient is expected to
    /// log in, whatever the key.
    void expectOfASession(int code, const std::string& row) { expectOf("WWWWWW", code, row); }

    /// The same of a server that does not get the password, and so needs two connections only.
    void expectNoLogin(const std::string& row)
    {
        const unsigned before = connections();
        expectOf("??????", CURLE_PEER_FAILED_VERIFICATION, row);
        EXPECT_EQ(2U, m_connections - before);
    }

    void expectOf(const std::string& outlooks, int code, const std::string& row)
    {
        const bool hasFile = !question.knownHostsFile.empty();
        const std::string before = hasFile ? contentOf(question.knownHostsFile) : "";
        report = examine(question);
        m_connections = connections();
        const std::vector<doctor::Prediction> predictions = predict(report);
        EXPECT_EQ(outlooks, outlooksOf(predictions));
        for (const doctor::Prediction& each : predictions) {
            EXPECT_EQ(code, each.session.code) << each.operation;
        }
        const auto file = [this](const std::string& name, const std::string& text) { fill(name, text); };
        expectTruth(ofSession(predictions), truthOfSession(question, local("scratch"), file));
        std::filesystem::remove(served("weekly/new.bak")); // some servers do not rename over a file
        EXPECT_EQ("ecdsa-sha2-nistp256 " + fingerprint + "; " + row + "; SFtpClient does not compare it", hostKeyRow());
        EXPECT_EQ(before, hasFile ? contentOf(question.knownHostsFile) : "");
    }

    /// Puts the line that the remedy names where it says, after which a session works.
    void followTheRemedy()
    {
        const std::string remedy = predict(report).front().session.remedy;
        const std::string file = question.knownHostsFile;
        const std::string end = "put this line at the top of " + file + ": ";
        const std::string::size_type at = remedy.find(end);
        ASSERT_NE(std::string::npos, at) << remedy;
        EXPECT_NE(std::string::npos, remedy.find(" the server's administrator confirms " + fingerprint)) << remedy;
        const std::string::size_type removal = remedy.find("ssh-keygen -R");
        if (removal != std::string::npos) {
            const std::string command = remedy.substr(removal, remedy.find(')') - removal);
            ASSERT_EQ(0, runProgram({{"sh", "-c", command}}).status) << command;
            EXPECT_EQ(std::string::npos, contentOf(file).find(host)) << contentOf(file);
        }
        writeFile(file, remedy.substr(at + end.size()) + "\n" + contentOf(file));
        expectOfASession(0, "as in " + file);
    }

    std::string hostKeyRow() const
    {
        std::string row;
        for (const doctor::Finding& each : findingsOf(report)) {
            row = each.probe == "host key" ? each.seen : row;
        }
        return row;
    }

    // The server's line with another key of the same type.
    std::string changedLine() const
    {
        std::string changed = line;
        char& one = changed[changed.size() - 8];
        one = one == 'A' ? 'B' : 'A';
        return changed + "\n";
    }

    Question question;
    Report report;
    std::string line;
    std::string fingerprint;
    std::string host;

private:
    unsigned m_connections = 0; // when the examination had ended
};

TEST_P(HostKeys, AreUnknownWhereASessionIsToldNothing)
{
    expectOfASession(CURLE_PEER_FAILED_VERIFICATION, "a session has nothing to compare it with");
    const doctor::Prediction test = predict(report).back();
    EXPECT_EQ("a session is told nothing of the server's host key", test.session.reason);
    EXPECT_EQ("If the server's administrator confirms " + fingerprint +
                  ", give that with --fingerprint (SessionOptions::hostKeySha256), or put this line at the top of "
                  "~/.ssh/known_hosts, or of a file for --known-hosts (SessionOptions::knownHostsFile): " +
                  line,
              test.session.remedy);
}

TEST_P(HostKeys, AreComparedWithAFingerprint)
{
    question.hostKeySha256 = fingerprint.substr(7) + "=";
    expectOfASession(0, "as expected");
    question.hostKeySha256 = "SHA256:another";
    expectNoLogin("expected is SHA256:another");
}

TEST_P(HostKeys, AreComparedWithKnownHosts)
{
    const std::string file = local("known_hosts");
    knowing("");
    expectOfASession(CURLE_PEER_FAILED_VERIFICATION, "not in " + file);
    followTheRemedy();
    knowing(changedLine());
    expectNoLogin(file + " has another one for the server");
    followTheRemedy();
}

// The fingerprint stands for a missing line, not for another one.
TEST_P(HostKeys, AreComparedWithBoth)
{
    const std::string file = local("known_hosts");
    question.hostKeySha256 = fingerprint;
    knowing(line + "\n");
    expectOfASession(0, "as in " + file + "; as expected");
    knowing("");
    expectOfASession(0, "not in " + file + "; as expected");
    knowing(changedLine());
    expectNoLogin(file + " has another one for the server; as expected");
    question.hostKeySha256 = "SHA256:another";
    knowing(line + "\n");
    expectNoLogin("as in " + file + "; expected is SHA256:another");
}

TEST_P(HostKeys, ThatHaveChangedKeepWritingFromBeingTried)
{
    knowing(changedLine());
    question.fileName = "sftpclient-doctor-test";
    report = examine(question);
    ASSERT_TRUE(report.roundTrip);
    EXPECT_EQ("the password is not sent to a server that has another host key than it should",
              report.roundTrip->notMade);
    EXPECT_FALSE(report.sessionTrip);
    EXPECT_EQ("??????", outlooksOf(predict(report)));
}

// libcurl asks for the type of key that it finds there, and these servers have none of it.
TEST_P(HostKeys, MayBeOfAnotherTypeThanTheKnownOne)
{
    const std::string file = local("known_hosts");
    knowing(host + kEd25519 + "\n");
    expectOfASession(CURLE_FAILED_INIT, "because of " + file + " a session asks for one of another type, in vain");
    const std::string reason = predict(report).front().session.reason;
    EXPECT_EQ(0U, reason.find("because of " + file +
                              " a session asks for a host key of another type than the server has (Failure "
                              "establishing ssh session: "))
        << reason;
    followTheRemedy();
}

// A hashed name tells libcurl nothing, so that it takes the first for the server's.
TEST_P(HostKeys, MayBeOfAnotherTypeThanAHashedOneOfAnotherServer)
{
    const std::string file = local("known_hosts");
    knowing(std::string("other.example") + kEd25519 + "\n");
    ASSERT_EQ(0, runProgram({{"ssh-keygen", "-q", "-H", "-f", file}}).status);
    expectOfASession(CURLE_FAILED_INIT, "because of " + file + " a session asks for one of another type, in vain");
    followTheRemedy();
}

// One without a key.
TEST_P(HostKeys, AreNotLookedForBehindALineThatLibcurlCannotRead)
{
    knowing("other.example\n" + line + "\n");
    expectOfASession(CURLE_PEER_FAILED_VERIFICATION, "not in " + question.knownHostsFile);
    followTheRemedy();
}

// libcurl takes the marker for the server's name.
TEST_P(HostKeys, AreNotRevokedByAMarker)
{
    knowing("@revoked " + line + "\n" + line + "\n");
    expectOfASession(0, "as in " + question.knownHostsFile);
    knowing("@cert-authority *" + line.substr(line.find(' ')) + "\n");
    expectOfASession(CURLE_PEER_FAILED_VERIFICATION, "not in " + question.knownHostsFile);
}

// Turns the second connection away that comes after a file FOLDER/first was written.
ProcessSetup sometimesTurnsAway(const std::string& folder)
{
    ProcessSetup daemon = opensshSftp(folder);
    Words words = {"/bin/sh", "-c",
                   "if [ -e \"$0/first\" ]; then mv \"$0/first\" \"$0/second\"\n"
                   "elif [ -e \"$0/second\" ]; then rm \"$0/second\"; exit; fi\n"
                   "exec \"$@\"",
                   folder};
    words.insert(words.end(), daemon.words.begin(), daemon.words.end());
    daemon.words = words;
    return daemon;
}

std::vector<Server> unsteadyServers()
{
    Server server = sshServers().back(); // OpenSSH
    server.configure = sometimesTurnsAway;
    return {server};
}

using HostKeysOfAnUnsteadyServer = HostKeys;

// The connection after the greeting's.
TEST_P(HostKeysOfAnUnsteadyServer, AreLookedForAgain)
{
    knowing(line + "\n");
    writeFile(local("daemon/first"), "");
    expectOfASession(0, "as in " + question.knownHostsFile);
    EXPECT_FALSE(exists(local("daemon/first")) || exists(local("daemon/second")));
}

class HostKeysOfTheCommand : public HostKeys
{
protected:
    void SetUp() override
    {
        HostKeys::SetUp();
        std::filesystem::create_directories(local("home/.ssh"));
        writeFile(usual, line + "\n");
    }

    int doctor(const Words& more)
    {
        Words words = {question.request.remotePath, "--user", request.userName, "--json"};
        words.insert(words.end(), more.begin(), more.end());
        DoctorProcess process(words, request.password, {{"HOME", local("home")}});
        const int status = process.wait();
        said = process.err();
        json = nlohmann::json::parse(process.out(), nullptr, false);
        return status;
    }

    std::string seenBy(const std::string& probe) const
    {
        for (const auto& each : json["findings"]) {
            if (each["probe"] == probe) {
                return each["grade"].get<std::string>() + ": " + each["seen"].get<std::string>();
            }
        }
        return "";
    }

    const std::string usual = local("home/.ssh/known_hosts");
    nlohmann::json json;
    std::string said;
};

TEST_P(HostKeysOfTheCommand, AreComparedWithTheUsersOwnFile)
{
    EXPECT_EQ(0, doctor({"--write"})) << said;
    EXPECT_EQ("ok: ecdsa-sha2-nistp256 " + fingerprint + "; as in " + usual + "; SFtpClient does not compare it",
              seenBy("host key"));
    EXPECT_EQ("ok: a small file was sent, listed, fetched, renamed and removed", seenBy("session's round trip"));
    EXPECT_EQ(line + "\n", contentOf(usual));
}

TEST_P(HostKeysOfTheCommand, AreComparedWithTheFileOfTheOption)
{
    const std::string given = local("given");
    writeFile(given, "");
    EXPECT_EQ(0, doctor({"--known-hosts", given})) << said;
    EXPECT_EQ("warn: ecdsa-sha2-nistp256 " + fingerprint + "; not in " + given + "; SFtpClient does not compare it",
              seenBy("host key"));
    EXPECT_EQ(60, json["operations"][0]["session"]["code"]);
    EXPECT_EQ("the server's host key is not in " + given, json["operations"][0]["session"]["reason"]);

    const unsigned before = connections();
    EXPECT_EQ(2, doctor({"--known-hosts", local("missing")}));
    EXPECT_NE(std::string::npos, said.find("The file of --known-hosts " + local("missing") + " cannot be read"));
    EXPECT_EQ(before, connections());
}

} // namespace

INSTANTIATE_TEST_SUITE_P(OverSsh, HostKeys, testing::ValuesIn(sshServers()), idOf);
INSTANTIATE_TEST_SUITE_P(OverSsh, HostKeysOfTheCommand, testing::ValuesIn(sshServers()), idOf);
INSTANTIATE_TEST_SUITE_P(OfDebian, HostKeysOfAnUnsteadyServer, testing::ValuesIn(unsteadyServers()), idOf);
