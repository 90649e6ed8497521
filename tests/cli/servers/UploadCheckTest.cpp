// The check of an upload's size, against OpenSSH's daemon.
#include "RealServer.h"

#include "support/Process.h"

#include <operation/UploadCheck.h>
#include <output/Listing.h>

namespace {

class SshServer : public RealServer
{
protected:
    RemoteSize sizeOf(const std::string& name)
    {
        aimAt(name);
        return askSize(request);
    }
};

TEST_P(SshServer, ReportsTheSizeOfAnUpload)
{
    keep("large.bak", std::string(300001, 'x'));
    keep("empty.bak", "");
    keep("with blank.bak", "123");
    EXPECT_EQ(300001, sizeOf("large.bak").bytes);
    EXPECT_EQ(0, sizeOf("empty.bak").bytes);
    EXPECT_EQ(3, sizeOf("with%20blank.bak").bytes);
    const RemoteSize missing = sizeOf("missing.bak");
    EXPECT_EQ(std::nullopt, missing.bytes);
    EXPECT_EQ("asking for it failed: Remote file not found", missing.whyNot);
}

TEST_P(SshServer, ReportsTheSizeToTheCommand)
{
    keep("first.bak", "");
    writeFile(local("file"), std::string(70000, 'x'));
    const TextFile output;
    aimAt("sent.bak");
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND, "put",    local("file"),    request.remotePath,
                   "--as-host",        "--user", request.userName, "--json"};
    setup.environment = {{"SFTPCLIENT_PASSWORD", request.password}};
    setup.out = output.path();
    setup.err = "/dev/null";
    EXPECT_EQ(0, Process(setup).wait());
    const std::string result = contentOf(output.path());
    EXPECT_TRUE(holds("\"bytes\":70000,", result));
    EXPECT_TRUE(holds("\"sizeChecked\":true", result));
}

// A session asks whose key that is, and says which options answer.
TEST_P(SshServer, IsKnownByItsFingerprint)
{
    keep("kept.bak", "contents");
    aimAt("kept.bak");
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND, "get", request.remotePath, "-", "--quiet", "--user", request.userName};
    setup.environment = {{"SFTPCLIENT_PASSWORD", request.password}};
    const ProgramResult unknown = runProgram(setup);
    EXPECT_TRUE(exited(CURLE_PEER_FAILED_VERIFICATION, unknown));
    const std::string begin =
        "get: 60 SSL peer certificate or SSH remote key was not OK: the server's host key is unknown: ";
    const std::string result = lastLine(unknown.err);
    ASSERT_EQ(0U, result.find(begin + "SHA256:")) << result;
    const std::string::size_type end = result.find(';');
    EXPECT_EQ("; where that is right, set --fingerprint to it, or add the host to --known-hosts", result.substr(end));
    setup.words.insert(setup.words.end(), {"--fingerprint", result.substr(begin.size(), end - begin.size())});
    const ProgramResult known = runProgram(setup);
    EXPECT_TRUE(exited(0, known));
    EXPECT_EQ("contents", known.out);
    // And doctor, which is told, expects no refusal.
    aimAt("");
    ProcessSetup doctor = setup;
    doctor.words = {SFTPCLIENT_COMMAND, "doctor",        request.remotePath, "--user",
                    request.userName,   "--fingerprint", setup.words.back()};
    const std::string report = runProgram(doctor).out;
    const std::string::size_type predictions = report.find("test ");
    ASSERT_NE(std::string::npos, predictions) << report;
    EXPECT_EQ(std::string::npos, report.find("will fail with 60", predictions)) << report;
    doctor.words.resize(5);
    EXPECT_NE(std::string::npos, runProgram(doctor).out.find("will fail with 60"));
    setup.words.back() = "SHA256:ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0";
    EXPECT_TRUE(exited(CURLE_PEER_FAILED_VERIFICATION, runProgram(setup)));
}

INSTANTIATE_TEST_SUITE_P(OfDebian, SshServer, testing::ValuesIn(sshServers()), idOf);

} // namespace
