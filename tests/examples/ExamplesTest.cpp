#include "harness/LogShape.h"
#include "harness/RunProgram.h"
#include "harness/TemporaryFolder.h"

#include <Certificates.h>
#include <FtpServer.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>

namespace {

using testserver::TlsMode;

/// A server with one file, and what a newcomer has to hand to an example.
class ExamplesTest : public testing::Test
{
protected:
    ExamplesTest()
    {
        m_config.root = m_folder.file("served");
        std::filesystem::create_directory(m_config.root);
        m_folder.write("served/sunday.bak", "the content\n");
        m_config.password = "correct horse";
        m_config.certificate = m_authority.issue();
    }

    void serve(TlsMode tls)
    {
        m_config.tls = tls;
        m_server = std::make_unique<testserver::FtpServer>(m_config);
    }

    std::string url(const std::string& name) const
    {
        return (m_config.tls == TlsMode::Implicit ? "ftps://localhost:" : "ftp://localhost:") +
               std::to_string(m_server->port()) + "/" + name;
    }

    ProgramResult runMinimalHost(const std::string& name)
    {
        const std::string log = "[Log]\nTarget=" + m_folder.file("host.log") + "\n";
        return run({MINIMAL_HOST, m_folder.write("host.ini", m_general + log), m_ca, url(name), m_local});
    }

    ProgramResult runOwnHost(const std::string& name) { return run({OWN_HOST, m_ca, url(name), m_local}); }

    /// The size check knows the machine's trust store only, so the CA is in its place.
    ProgramResult run(const std::vector<std::string>& command)
    {
        return runProgram(command, {{"HOST_PASSWORD", m_config.password},
                                    {"SFTPCLIENT_DEFAULT_TRUST", m_ca},
                                    {"LD_PRELOAD", DEFAULT_TRUST},
                                    {"ASAN_OPTIONS", "verify_asan_link_order=0"}});
    }

    /// The log file's content; the file is gone afterwards.
    std::string takeLog() const
    {
        const std::string log = replaceLines(replaceTimes(contentOf(m_folder.file("host.log"))));
        std::filesystem::remove(m_folder.file("host.log"));
        return log;
    }

    TemporaryFolder m_folder;
    std::string m_local = m_folder.file("fetched.bak");
    testserver::CertificateAuthority m_authority;
    std::string m_general;
    std::string m_ca = m_folder.write("ca.pem", m_authority.certificatePem());
    testserver::ServerConfig m_config;
    std::unique_ptr<testserver::FtpServer> m_server;
};

std::string lastLineOf(const std::string& text)
{
    const std::size_t end = text.find_last_of('\n');
    return text.substr(text.find_last_of('\n', end - 1) + 1);
}

/// Standard error of own-host without libcurl's trace, which the library's size check writes there.
std::string recordsIn(const std::string& err)
{
    std::string records;
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);) {
        records += line.rfind("SFtpClient #", 0) == 0 ? line + "\n" : "";
    }
    return records;
}

TEST_F(ExamplesTest, MinimalHostDownloads)
{
    for (const TlsMode tls : {TlsMode::Explicit, TlsMode::Implicit}) {
        serve(tls);
        const ProgramResult result = runMinimalHost("sunday.bak");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(lastLineOf(result.out), "result 0 \n");
        EXPECT_EQ(contentOf(m_local), "the content\n");
        EXPECT_EQ(takeLog(), "TIME debug minimal-host request=1 download:LINE fetching " + url("sunday.bak") +
                                 "\n"
                                 "TIME debug SFtpClient request=1 SFtpClient::CheckFileSizeBeforeDownload():LINE "
                                 "remoteFileSizeByte =12, fileSizeLimit = 53687091200\n"
                                 "TIME debug SFtpClient request=0 sftpSetCertTmp():LINE Establish SSL with cert\n"
                                 "TIME info SFtpClient request=1 CurlSFtpResponse::DownLoadSFtpFile():LINE "
                                 "DownLoadSFtpFile():end \n");
        EXPECT_TRUE(std::filesystem::remove(m_local));
    }
}

TEST_F(ExamplesTest, MinimalHostTellsOfAFailure)
{
    serve(TlsMode::Implicit);
    const ProgramResult result = runMinimalHost("missing/sunday.bak");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLineOf(result.out), "result -1 \n");
    EXPECT_EQ(takeLog(), "TIME debug minimal-host request=1 download:LINE fetching " + url("missing/sunday.bak") +
                             "\n"
                             "TIME error SFtpClient request=1 SFtpClient::CheckFileSizeBeforeDownload():LINE "
                             "curl_easy_perform fail, res =Access denied to remote resource\n");
}

TEST_F(ExamplesTest, MinimalHostNamesAConfigurationThatIsMissing)
{
    const std::string missing = m_folder.file("missing.ini");
    const ProgramResult result = run({MINIMAL_HOST, missing, m_ca, "ftps://localhost:1/a", m_local});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "minimal-host: " + missing + ": cannot open file\n");
}

TEST_F(ExamplesTest, OwnHostDownloads)
{
    for (const TlsMode tls : {TlsMode::Explicit, TlsMode::Implicit}) {
        serve(tls);
        const ProgramResult result = runOwnHost("sunday.bak");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(lastLineOf(result.out), "result 0 \n");
        EXPECT_EQ(contentOf(m_local), "the content\n");
        EXPECT_EQ(recordsIn(result.err),
                  "SFtpClient #1 level 1 SFtpClient::CheckFileSizeBeforeDownload() "
                  "remoteFileSizeByte =12, fileSizeLimit = 53687091200\n"
                  "SFtpClient #0 level 1 sftpSetCertTmp() Establish SSL with cert\n"
                  "SFtpClient #1 level 2 CurlSFtpResponse::DownLoadSFtpFile() DownLoadSFtpFile():end \n");
        EXPECT_TRUE(std::filesystem::remove(m_local));
    }
}

// Without a certificate to go by, the configuration service decides.
TEST_F(ExamplesTest, MinimalHostGoesByItsCertAuthSwitch)
{
    m_folder.write("ca.pem", "none");
    serve(TlsMode::Explicit);
    EXPECT_EQ(lastLineOf(runMinimalHost("sunday.bak").out).substr(0, 10), "result 77 ");
    m_general = "[General]\nCertAuthSwitch=0\n";
    EXPECT_EQ(lastLineOf(runMinimalHost("sunday.bak").out), "result 0 \n");
}

TEST_F(ExamplesTest, OwnHostTrustsNoUnknownServer)
{
    m_folder.write("ca.pem", "none");
    serve(TlsMode::Explicit);
    EXPECT_EQ(lastLineOf(runOwnHost("sunday.bak").out).substr(0, 10), "result 77 ");
}

TEST_F(ExamplesTest, TellHowTheyAreUsed)
{
    EXPECT_EQ(run({MINIMAL_HOST}).err, "usage: HOST_PASSWORD=... minimal-host INI-FILE CA-FILE URL LOCAL-FILE\n");
    EXPECT_EQ(run({MINIMAL_HOST}).status, 2);
    EXPECT_EQ(run({OWN_HOST}).err, "usage: HOST_PASSWORD=... own-host CA-FILE URL LOCAL-FILE\n");
    EXPECT_EQ(run({OWN_HOST}).status, 2);
}

} // namespace
