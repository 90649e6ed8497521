#include "harness/Served.h"

#include "harness/TextFile.h"

#include <algorithm>

namespace {

bool holds(const testserver::Transcript& session, const std::string& line)
{
    return std::find(session.begin(), session.end(), line) != session.end();
}

} // namespace

TEST_F(Served, FetchesAFileUnderItsOwnName)
{
    writeFile(served("a b.bak"), "contents");
    serve();
    const CommandResult result = run({"get", url("/a%20b.bak")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(lastLine(result.err), "get: 0 No error");
    EXPECT_EQ(contentsOf(local("a b.bak")), "contents");
}

TEST_F(Served, SendsAFileUnderItsOwnName)
{
    config.tls = testserver::TlsMode::Implicit;
    writeFile(local("a b.bak"), "contents");
    serve();
    const CommandResult result = run({"put", "a b.bak", url("/new/")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(lastLine(result.err), "put: 0 No error");
    EXPECT_EQ(contentsOf(served("new/a b.bak")), "contents");
    const std::vector<testserver::Transcript> said = sessions();
    ASSERT_EQ(said.size(), 2U);
    EXPECT_TRUE(holds(said[1], "> SIZE a b.bak"));
    EXPECT_TRUE(holds(said[1], "= TLS on control"));
}

TEST_F(Served, KeepsStandardOutputForTheNames)
{
    writeFile(served("one"), "");
    writeFile(served("two\x1b[2J"), "");
    serve();
    const CommandResult result = run({"ls", url()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "one\ntwo\x1b[2J\n");
    EXPECT_EQ(lastLine(result.err), "ls: 0 No error");
    const CommandResult toFile = run({"ls", url(), "names"});
    EXPECT_EQ(toFile.out, "");
    EXPECT_EQ(contentsOf(local("names")), result.out);
}

TEST_F(Served, RenamesDeletesAndTests)
{
    writeFile(served("old"), "contents");
    serve();
    for (const std::vector<std::string>& form :
         std::vector<std::vector<std::string>>{{"test", url()}, {"mv", url(), "old", "new"}, {"rm", url(), "new"}}) {
        const CommandResult result = run(form);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(lastLine(result.err), form[0] + ": 0 No error");
        EXPECT_EQ(exists(served("new")), form[0] == "mv");
    }
    EXPECT_FALSE(exists(served("old")));
}

TEST_F(Served, ExitsWithTheResult)
{
    serve();
    EXPECT_EQ(run({"get", url("/missing"), "x"}).status, 78);
    EXPECT_EQ(run({"ls", url("/missing/")}).status, 78);
    const CommandResult refused = run({"test", url()}, {{"SFTPCLIENT_PASSWORD", "wrong"}});
    EXPECT_EQ(refused.status, 67);
    EXPECT_EQ(lastLine(refused.err), "test: 67 Login denied (the server's last reply: 530 login incorrect)");
    EXPECT_NE(refused.err.find("\nhint: check user and password; "), std::string::npos) << refused.err;
    EXPECT_EQ(runCommand({"ls", url(), "--ca", "none"}, environment()).status, 77);
}

TEST_F(Served, SaysWhyADownloadWasNotBegun)
{
    writeFile(served("file"), "contents");
    serve({"SIZE=reply:500 unknown"});
    const CommandResult result = run({"get", url("/file")});
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(
        lastLine(result.err),
        "get: -1 the size check before the download refused: the server does not report the file's size, or it is "
        "above the library's limit; the log records above say which");
    EXPECT_FALSE(exists(local("file")));
}

TEST_F(Served, LogsInFromEverySource)
{
    serve();
    writeFile(local("password"), config.password + "\n");
    writeFile(local("netrc"), "machine localhost login backup password \"" + config.password + "\"\n");
    writeFile(local(".netrc"), "default login backup password \"" + config.password + "\"\n");
    writeFile(local("config"), "[sftpclient]\nuser=backup\npassword-file=password\nca=" + folder() + "/ca.pem\n");
    const std::string ca = folder() + "/ca.pem";
    const auto status = [this](const std::vector<std::string>& form, Variables variables,
                               const std::string& input = "") {
        const Variables trusted = trust();
        variables.insert(variables.end(), trusted.begin(), trusted.end());
        return runCommand(form, variables, local(""), input).status;
    };
    EXPECT_EQ(status({"test", url(), "--ca", ca, "--password-file", "password"}, {}), 0);
    EXPECT_EQ(status({"test", url(), "--ca", ca, "--password-stdin"}, {}, config.password + "\n"), 0);
    EXPECT_EQ(status({"test", url(), "--ca", ca}, {{"SFTPCLIENT_PASSWORD", config.password}}), 0);
    EXPECT_EQ(status({"test", plainUrl(), "--ca", ca, "--netrc-file", "netrc"}, {}), 0);
    EXPECT_EQ(status({"test", plainUrl(), "--ca", ca, "--netrc"}, {{"HOME", local("")}}), 0);
    EXPECT_EQ(status({"test", plainUrl(), "--config", "config"}, {}), 0);
    EXPECT_EQ(status({"test", plainUrl()}, {{"SFTPCLIENT_CONFIG", "config"}}), 0);
    EXPECT_EQ(status({"test", plainUrl(), "--config", "config"}, {{"SFTPCLIENT_USER", "other"}}), 67);
    EXPECT_EQ(status({"test", url(), "--config", "config"}, {{"SFTPCLIENT_USER", "other"}}), 0);
    EXPECT_EQ(status({"test", url(), "--ca", ca, "--password-stdin"}, {}, ""), 2);
}

TEST_F(Served, TracesAllConnectionsOfTheOperation)
{
    config.tls = testserver::TlsMode::Implicit;
    writeFile(served("file"), "contents");
    serve();
    const CommandResult result = run({"get", url("/file"), "--trace", "--quiet"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("> USER ****\n"), std::string::npos);
    EXPECT_NE(result.err.find("> PASS ****\n"), std::string::npos);
    EXPECT_NE(result.err.find("< 230 logged in\n"), std::string::npos);
    EXPECT_NE(result.err.find("* SSL connection using "), std::string::npos);
    const std::string::size_type download = result.err.find("> RETR file\n");
    EXPECT_NE(download, std::string::npos);
    EXPECT_LT(result.err.find("> SIZE file\n"), result.err.find("> PASS ****\n", result.err.find("> SIZE file\n")));
    EXPECT_EQ(run({"get", url("/file"), "--quiet"}).err, "get: 0 No error\n");
}

TEST_F(Served, LetsAnUnverifiedServerPassWhereTheConfigurationSaysSo)
{
    serve();
    writeFile(local("config"), "[General]\nCertAuthSwitch=0\n[sftpclient]\nca=none\n");
    EXPECT_EQ(runCommand({"test", url(), "--config", "config"}, environment(), local("")).status, 0);
}

TEST_F(Served, HintsAtWhatTheSizeCheckOfADownloadMet)
{
    config.tls = testserver::TlsMode::Implicit;
    serve();
    writeFile(local("other-ca.pem"), testserver::CertificateAuthority("Another CA").certificatePem());
    const CommandResult result = run({"get", url("/file")}, {{"SFTPCLIENT_DEFAULT_TRUST", local("other-ca.pem")}});
    EXPECT_EQ(result.status, 255);
    EXPECT_NE(result.err.find("hint: the server's certificate is not trusted; "), std::string::npos) << result.err;
}
