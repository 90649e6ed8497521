#include "ServerTest.h"

#include "support/Process.h"

#include <csignal>
#include <cstdlib>

namespace {

namespace fs = std::filesystem;

// The program `ftp-test-server`. A running one is ended with the object.
class Program
{
public:
    explicit Program(const Lines& arguments, const std::string& password = "")
        : m_process({Lines{TEST_SERVER_PROGRAM} + arguments, environment(password), "", input.reader(), output.writer(),
                     output.writer()})
    {
        input.closeReader();
        output.closeWriter();
    }

    // The port in its first line.
    std::uint16_t port()
    {
        const std::string expected = "listening on 127.0.0.1:";
        const std::string said = output.line();
        EXPECT_EQ(expected, said.substr(0, expected.size())) << said;
        return static_cast<std::uint16_t>(std::stoi("0" + said.substr(std::min(said.size(), expected.size()))));
    }

    void signal(int number) const { m_process.signal(number); }
    int wait() { return m_process.wait(); }

    Pipe input;
    Pipe output;

private:
    static decltype(ProcessSetup::environment) environment(const std::string& password)
    {
        return {{"FTP_TEST_PASSWORD", password}};
    }

    Process m_process;
};

class ProgramTest : public ServerTest
{
protected:
    ProgramTest()
    {
        writeFile(path("password"), "secret\nand more\n");
        writeFile(served("a"), "the content");
    }

    std::string path(const std::string& name) const { return folder.file(name); }

    // The arguments to serve in the clear.
    Lines plain(const Lines& more = {}) const
    {
        return Lines{"--root", config.root, "--tls", "plain", "--password-file", path("password")} + more;
    }
};

TEST_F(ProgramTest, ServesUntilASignal)
{
    for (const int number : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(number == SIGTERM ? "SIGTERM" : "SIGINT");
        Program program(plain());
        RawClient client(program.port());
        EXPECT_EQ("220 ready", client.line());
        program.signal(number);
        EXPECT_EQ("", client.rest());
        EXPECT_EQ(0, program.wait());
        EXPECT_EQ("", program.output.rest());
    }
}

TEST_F(ProgramTest, ServesUntilItsInputEnds)
{
    Program program(plain({"--until-eof"}));
    RawClient client(program.port());
    EXPECT_EQ("220 ready", client.line());
    program.input.closeWriter();
    EXPECT_EQ(0, program.wait());
}

TEST_F(ProgramTest, IgnoresTheEndOfItsInputByDefault)
{
    Program program(plain());
    const std::uint16_t port = program.port();
    program.input.closeWriter();
    EXPECT_EQ("220 ready", RawClient(port).line());
    program.signal(SIGTERM);
    EXPECT_EQ(0, program.wait());
}

TEST_F(ProgramTest, TakesThePasswordFromTheEnvironment)
{
    Program program({"--root", config.root, "--tls", "plain", "--user", "somebody"}, "from outside");
    RawClient client(program.port());
    client.line();
    client.ask("USER somebody");
    EXPECT_EQ("230 logged in", client.ask("PASS from outside"));
}

TEST_F(ProgramTest, WritesTranscripts)
{
    Program program(plain({"--transcript", path("transcript"), "--fault", "SIZE=reply:550 no", "--fault", "PWD=drop"}));
    const std::uint16_t port = program.port();
    {
        RawClient client(port);
        client.line();
        client.ask("USER backup");
        client.ask("PASS secret");
        EXPECT_EQ("550 no", client.ask("SIZE a"));
        EXPECT_EQ("", client.ask("PWD"));
    }
    program.signal(SIGTERM);
    EXPECT_EQ(0, program.wait());
    EXPECT_EQ("< 220 ready\n> USER backup\n< 331 password please\n> PASS ****\n< 230 logged in\n> SIZE a\n< 550 no\n"
              "> PWD\n\n",
              contentOf(path("transcript")));
}

TEST_F(ProgramTest, MakesCertificates)
{
    Program program({"--make-certificates", path("certificates")});
    EXPECT_EQ(0, program.wait());
    EXPECT_EQ("", program.output.rest());
    // Concatenated, so that no search for committed keys finds it here.
    const std::string keyBegins = std::string("-----BEGIN ") + "PRIVATE KEY-----";
    for (const char* name : {"server", "expired", "not-yet-valid", "wrong-host", "self-signed"}) {
        const std::string pair = path("certificates/") + name;
        EXPECT_EQ(0U, contentOf(pair + ".pem").find("-----BEGIN CERTIFICATE-----")) << name;
        EXPECT_EQ(0U, contentOf(pair + ".key").find(keyBegins)) << name;
        EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(pair + ".key").permissions()) << name;
    }
    EXPECT_EQ(0U, contentOf(path("certificates/ca.pem")).find("-----BEGIN CERTIFICATE-----"));
    EXPECT_EQ(0U, contentOf(path("certificates/other-ca.pem")).find("-----BEGIN CERTIFICATE-----"));
    EXPECT_EQ('\x30', contentOf(path("certificates/ca.der")).at(0)) << "a DER sequence";
}

TEST_F(ProgramTest, ServesWithTheCertificatesItMade)
{
    Program program({"--root", config.root, "--tls", "implicit", "--password-file", path("password"),
                     "--make-certificates", path("certificates")});
    const std::uint16_t port = program.port();
    config.tls = testserver::TlsMode::Implicit;
    CurlClient downloads(config, port, contentOf(path("certificates/ca.pem")));
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
    EXPECT_EQ("the content", downloads.body);
}

TEST_F(ProgramTest, ServesWithAGivenCertificate)
{
    writeFile(path("own.pem"), config.certificate.certificatePem);
    writeFile(path("own.key"), config.certificate.privateKeyPem);
    Program program({"--root", config.root, "--password-file", path("password"), "--certificate", path("own.pem"),
                     "--key", path("own.key"), "--require-tls"});
    CurlClient downloads(config, program.port(), authority.certificatePem());
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
}

TEST_F(ProgramTest, InvalidUsageIsReportedAndFails)
{
    struct Row
    {
        Lines arguments;
        const char* said;
    };
    const Row rows[] = {
        {{}, "Nothing to do: name a folder to serve with --root.\n"},
        {{"--root", "/no such folder"}, "Directory does not exist: /no such folder"},
        {{"--root", config.root}, "with TLS it needs both"},
        {plain({"--fault", "SIZE"}), "fault \"SIZE\": there is no ="},
        {{"--root", config.root, "--password-file", path("none")}, "cannot be read"},
        {{"--root", config.root, "--certificate", path("password")}, "--certificate requires --key"},
    };
    for (const Row& row : rows) {
        Program program(row.arguments);
        const std::string said = program.output.rest();
        EXPECT_NE(0, program.wait()) << row.said;
        EXPECT_NE(std::string::npos, said.find(row.said)) << "said, in place of " << row.said << ": " << said;
    }
}

TEST_F(ProgramTest, HelpHasExamples)
{
    Program program({"--help"});
    const std::string said = program.output.rest();
    EXPECT_EQ(0, program.wait());
    EXPECT_NE(std::string::npos, said.find("Examples:\n  ftp-test-server --make-certificates certs\n"));
}

} // namespace
