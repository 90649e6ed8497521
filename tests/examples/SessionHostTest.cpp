// The example that runs the six operations of a session, against a server that requires TLS at login.
#include "support/Process.h"
#include "support/ServerFixture.h"

#include <algorithm>
#include <regex>

namespace {

class SessionHost : public ServerFixture
{
protected:
    SessionHost()
    {
        config.tlsRequiredAtLogin = true;
        config.tlsReuseRequired = true;
    }

    int run()
    {
        const std::string ca = folder.write("ca.pem", authority.certificatePem());
        const std::string url = "ftp://localhost:" + std::to_string(server->port()) + "/";
        ProcessSetup setup{
            {SESSION_HOST, ca, url, folder.write("sent.bak", "the content\n"), folder.file("fetched.bak")}};
        setup.environment = {{"HOST_PASSWORD", config.password}};
        setup.out = folder.write("out", "");
        setup.err = folder.write("err", "");
        return Process(setup).wait();
    }

    /// What one connection sends to the server after the login.
    Lines commands()
    {
        const std::vector<Lines> all = sessions();
        Lines said;
        for (const std::string& line : all.at(0)) {
            if (line.rfind("> ", 0) == 0) {
                said.push_back(std::regex_replace(line, std::regex("[0-9A-F]{12}\\.part"), "XXXXXXXXXXXX.part"));
            }
        }
        const auto login = std::find(said.begin(), said.end(), "> PWD");
        return {login == said.end() ? login : login + 1, said.end()};
    }
};

} // namespace

TEST_F(SessionHost, UsesOneConnection)
{
    serve();
    EXPECT_EQ(0, run()) << contentOf(folder.file("err"));
    EXPECT_EQ("test: 0\nupload: 0\nlist: 0\n  sunday.bak, 12 bytes\nrename: 0\ndownload: 0\ndelete: 0\n",
              contentOf(folder.file("out")));
    EXPECT_EQ("the content\n", contentOf(folder.file("fetched.bak")));
    EXPECT_EQ(kNoFile, contentOf(served("monday.bak")));
    EXPECT_EQ(1U, sessions().size());
    EXPECT_TRUE(
        sameLines({"> NOOP", "> EPSV", "> TYPE I", "> STOR .sunday.bak.XXXXXXXXXXXX.part",
                   "> SIZE .sunday.bak.XXXXXXXXXXXX.part", "> RNFR .sunday.bak.XXXXXXXXXXXX.part", "> RNTO sunday.bak",
                   "> FEAT", "> EPSV", "> TYPE A", "> MLSD", "> RNFR sunday.bak", "> RNTO monday.bak", "> EPSV",
                   "> TYPE I", "> SIZE monday.bak", "> RETR monday.bak", "> DELE monday.bak", "> QUIT"},
                  commands()));
}

TEST_F(SessionHost, StopsAtTheFirstFailure)
{
    misbehave("STOR=reply:552 Quota exceeded");
    serve();
    EXPECT_EQ(1, run());
    EXPECT_EQ("test: 0\n", contentOf(folder.file("out")));
    const std::string said = contentOf(folder.file("err"));
    EXPECT_NE(std::string::npos, said.find("\nsession-host: upload: 25 Upload failed (at start/before it took off): "
                                           "Failed FTP upload: 552 (the server's last reply: 552 Quota exceeded)\n"))
        << said;
}

// It must not fall back on the CAs of the system.
TEST_F(SessionHost, NeedsItsCa)
{
    const std::string missing = folder.file("missing.pem");
    ProcessSetup setup{{SESSION_HOST, missing, "ftp://localhost:1/", folder.file("a"), folder.file("b")}};
    setup.environment = {{"HOST_PASSWORD", config.password}};
    const ProgramResult result = runProgram(setup);
    EXPECT_TRUE(exited(1, result));
    EXPECT_EQ("session-host: " + missing + " cannot be read.\n", result.err);
}
