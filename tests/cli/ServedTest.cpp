#include "harness/Served.h"

TEST_F(Served, FetchesAFileUnderItsOwnName)
{
    writeFile(served("a b.bak"), "contents");
    serve();
    const ProgramResult result = run({"get", url("/a%20b.bak")});
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ("", result.out);
    EXPECT_EQ("get: 0 No error", lastLine(result.err));
    EXPECT_EQ("contents", contentOf(local("a b.bak")));
}

TEST_F(ServedAsHost, SendsAFileUnderItsOwnName)
{
    config.tls = testserver::TlsMode::Implicit;
    writeFile(local("a b.bak"), "contents");
    serve();
    const ProgramResult result = run({"put", "a b.bak", url("/new/")});
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ("", result.out);
    EXPECT_EQ("put: 0 No error", lastLine(result.err));
    EXPECT_EQ("contents", contentOf(served("new/a b.bak")));
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(2U, said.size());
    EXPECT_TRUE(hasLine("> SIZE a b.bak", said[1]));
    EXPECT_TRUE(hasLine("= TLS on control", said[1]));
}

TEST_F(Served, PrintsOnlyNamesOnStandardOutput)
{
    writeFile(served("one"), "");
    writeFile(served("two\x1b[2J"), "");
    serve();
    const ProgramResult result = run({"ls", url()});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameText("one\ntwo\x1b[2J\n", result.out));
    EXPECT_EQ("ls: 0 No error", lastLine(result.err));
    const ProgramResult toFile = run({"ls", url(), "names"});
    EXPECT_EQ("", toFile.out);
    EXPECT_TRUE(sameText(result.out, contentOf(local("names"))));
}

TEST_F(Served, RenamesDeletesAndTests)
{
    writeFile(served("old"), "contents");
    serve();
    for (const Words& form : std::vector<Words>{{"test", url()}, {"mv", url(), "old", "new"}, {"rm", url(), "new"}}) {
        SCOPED_TRACE(form[0]);
        const ProgramResult result = run(form);
        EXPECT_TRUE(exited(0, result));
        EXPECT_EQ("", result.out);
        EXPECT_EQ(form[0] + ": 0 No error", lastLine(result.err));
        EXPECT_EQ(form[0] == "mv", exists(served("new")));
    }
    EXPECT_FALSE(exists(served("old")));
}

TEST_F(ServedAsHost, ExitsWithTheResult)
{
    serve();
    EXPECT_TRUE(exited(78, run({"get", url("/missing"), "x"})));
    EXPECT_TRUE(exited(78, run({"ls", url("/missing/")})));
    const ProgramResult refused = run({"test", url()}, {{"SFTPCLIENT_PASSWORD", "wrong"}});
    EXPECT_TRUE(exited(67, refused));
    EXPECT_EQ("test: 67 Login denied (the server's last reply: 530 login incorrect)", lastLine(refused.err));
    EXPECT_TRUE(holds("\nhint: check user and password; ", refused.err));
    EXPECT_TRUE(exited(77, runCommand({"ls", url(), "--ca", "none"}, environment())));
}

TEST_F(ServedAsHost, ExplainsWhyADownloadDidNotStart)
{
    writeFile(served("file"), "contents");
    serve({"SIZE=reply:500 unknown"});
    const ProgramResult result = run({"get", url("/file")});
    EXPECT_TRUE(exited(255, result));
    EXPECT_EQ(
        "get: -1 the size check before the download refused: the server does not report the file's size, or it is "
        "above the library's limit; the log records above say which",
        lastLine(result.err));
    EXPECT_FALSE(exists(local("file")));
}

TEST_F(Served, LogsInWithCredentialsFromEverySource)
{
    serve();
    writeFile(local("password"), config.password + "\n");
    writeFile(local("netrc"), "machine localhost login backup password \"" + config.password + "\"\n");
    writeFile(local(".netrc"), "default login backup password \"" + config.password + "\"\n");
    writeFile(local("config"), "[sftpclient]\nuser=backup\npassword-file=password\nca=" + ca() + "\n");
    const auto tried = [this](const Words& form, Variables variables, const std::string& input = "") {
        const Variables trusted = trust();
        variables.insert(variables.end(), trusted.begin(), trusted.end());
        return runCommand(form, variables, local(""), input);
    };
    EXPECT_TRUE(exited(0, tried({"test", url(), "--ca", ca(), "--password-file", "password"}, {})));
    EXPECT_TRUE(exited(0, tried({"test", url(), "--ca", ca(), "--password-stdin"}, {}, config.password + "\n")));
    EXPECT_TRUE(exited(0, tried({"test", url(), "--ca", ca()}, {{"SFTPCLIENT_PASSWORD", config.password}})));
    EXPECT_TRUE(exited(0, tried({"test", plainUrl(), "--ca", ca(), "--netrc-file", "netrc"}, {})));
    EXPECT_TRUE(exited(0, tried({"test", plainUrl(), "--ca", ca(), "--netrc"}, {{"HOME", local("")}})));
    EXPECT_TRUE(exited(0, tried({"test", plainUrl(), "--config", "config"}, {})));
    EXPECT_TRUE(exited(0, tried({"test", plainUrl()}, {{"SFTPCLIENT_CONFIG", "config"}})));
    EXPECT_TRUE(exited(67, tried({"test", plainUrl(), "--config", "config"}, {{"SFTPCLIENT_USER", "other"}})));
    EXPECT_TRUE(exited(0, tried({"test", url(), "--config", "config"}, {{"SFTPCLIENT_USER", "other"}})));
    EXPECT_TRUE(exited(2, tried({"test", url(), "--ca", ca(), "--password-stdin"}, {}, "")));
}

TEST_F(ServedAsHost, TracesAllConnectionsOfTheOperation)
{
    config.tls = testserver::TlsMode::Implicit;
    writeFile(served("file"), "contents");
    serve();
    const ProgramResult result = run({"get", url("/file"), "--trace", "--quiet"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ("", result.out);
    EXPECT_TRUE(holds("> USER ****\n", result.err));
    EXPECT_TRUE(holds("> PASS ****\n", result.err));
    EXPECT_TRUE(holds("< 230 logged in\n", result.err));
    EXPECT_TRUE(holds("* SSL connection using ", result.err));
    const std::string::size_type download = result.err.find("> RETR file\n");
    EXPECT_NE(std::string::npos, download);
    EXPECT_LT(result.err.find("> SIZE file\n"), result.err.find("> PASS ****\n", result.err.find("> SIZE file\n")));
    EXPECT_TRUE(sameText("get: 0 No error\n", run({"get", url("/file"), "--quiet"}).err));
}

TEST_F(Served, AcceptsAnUnverifiedServerIfConfigured)
{
    serve();
    writeFile(local("config"), "[General]\nCertAuthSwitch=0\n[sftpclient]\nca=none\n");
    EXPECT_TRUE(exited(0, runCommand({"test", url(), "--config", "config"}, environment(), local(""))));
}

TEST_F(ServedAsHost, HintsWhyTheSizeCheckOfADownloadFailed)
{
    config.tls = testserver::TlsMode::Implicit;
    serve();
    writeFile(local("other-ca.pem"), testserver::CertificateAuthority("Another CA").certificatePem());
    const ProgramResult result = run({"get", url("/file")}, {{"SFTPCLIENT_DEFAULT_TRUST", local("other-ca.pem")}});
    EXPECT_TRUE(exited(255, result));
    EXPECT_TRUE(holds("hint: the server's certificate is not trusted; ", result.err));
}
