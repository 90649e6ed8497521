#include "support/LogShape.h"
#include "support/Process.h"
#include "support/ServerFixture.h"

#include <filesystem>

namespace {

using testserver::TlsMode;

/// A server with one file, and what a newcomer has to give an example.
class ExamplesTest : public ServerFixture
{
protected:
    ExamplesTest() { writeFile(served("sunday.bak"), "the content\n"); }

    void serve(TlsMode tls)
    {
        config.tls = tls;
        ServerFixture::serve();
    }

    ProgramResult runMinimalHost(const std::string& name)
    {
        const std::string log = "[Log]\nTarget=" + folder.file("host.log") + "\n";
        return run({MINIMAL_HOST, folder.write("host.ini", m_general + log), m_ca, url(name), m_local});
    }

    ProgramResult runOwnHost(const std::string& name) { return run({OWN_HOST, m_ca, url(name), m_local}); }

    /// The size check uses only the machine's trust store, so the CA takes its place.
    ProgramResult run(const std::vector<std::string>& command)
    {
        ProcessSetup setup;
        setup.words = command;
        setup.environment = {
            {"HOST_PASSWORD", config.password}, {"SFTPCLIENT_DEFAULT_TRUST", m_ca}, {"LD_PRELOAD", DEFAULT_TRUST}};
        return runProgram(setup);
    }

    /// The log file's content; the file is gone afterwards.
    std::string takeLog() const
    {
        const std::string log = replaceLines(replaceTimes(contentOf(folder.file("host.log"))));
        std::filesystem::remove(folder.file("host.log"));
        return log;
    }

    std::string m_local = local("fetched.bak");
    std::string m_general;
    std::string m_ca = folder.write("ca.pem", authority.certificatePem());
};

/// Standard error of own-host without libcurl's trace, which the library's size check writes there.
std::string recordsIn(const std::string& err)
{
    std::string records;
    for (const std::string& line : linesOf(err)) {
        records += line.rfind("SFtpClient #", 0) == 0 ? line + "\n" : "";
    }
    return records;
}

TEST_F(ExamplesTest, MinimalHostDownloads)
{
    for (const TlsMode tls : {TlsMode::Explicit, TlsMode::Implicit}) {
        SCOPED_TRACE(static_cast<int>(tls));
        serve(tls);
        const ProgramResult result = runMinimalHost("/sunday.bak");
        EXPECT_TRUE(exited(0, result));
        EXPECT_EQ("result 0 ", lastLine(result.out));
        EXPECT_EQ("the content\n", contentOf(m_local));
        EXPECT_TRUE(sameText("TIME debug minimal-host request=1 download:LINE fetching " + url("/sunday.bak") +
                                 "\n"
                                 "TIME debug SFtpClient request=1 SFtpClient::CheckFileSizeBeforeDownload():LINE "
                                 "remoteFileSizeByte =12, fileSizeLimit = 53687091200\n"
                                 "TIME debug SFtpClient request=0 sftpSetCertTmp():LINE Establish SSL with cert\n"
                                 "TIME info SFtpClient request=1 CurlSFtpResponse::DownLoadSFtpFile():LINE "
                                 "DownLoadSFtpFile():end \n",
                             takeLog()));
        EXPECT_TRUE(std::filesystem::remove(m_local));
    }
}

TEST_F(ExamplesTest, MinimalHostReportsAFailure)
{
    serve(TlsMode::Implicit);
    const ProgramResult result = runMinimalHost("/missing/sunday.bak");
    EXPECT_TRUE(exited(1, result));
    EXPECT_EQ("result -1 ", lastLine(result.out));
    EXPECT_TRUE(sameText("TIME debug minimal-host request=1 download:LINE fetching " + url("/missing/sunday.bak") +
                             "\n"
                             "TIME error SFtpClient request=1 SFtpClient::CheckFileSizeBeforeDownload():LINE "
                             "curl_easy_perform fail, res =Access denied to remote resource\n",
                         takeLog()));
}

TEST_F(ExamplesTest, MinimalHostNamesAConfigurationThatIsMissing)
{
    const std::string missing = folder.file("missing.ini");
    const ProgramResult result = run({MINIMAL_HOST, missing, m_ca, "ftps://localhost:1/a", m_local});
    EXPECT_TRUE(exited(1, result));
    EXPECT_TRUE(sameText("minimal-host: " + missing + ": cannot open file\n", result.err));
}

TEST_F(ExamplesTest, OwnHostDownloads)
{
    for (const TlsMode tls : {TlsMode::Explicit, TlsMode::Implicit}) {
        SCOPED_TRACE(static_cast<int>(tls));
        serve(tls);
        const ProgramResult result = runOwnHost("/sunday.bak");
        EXPECT_TRUE(exited(0, result));
        EXPECT_EQ("result 0 ", lastLine(result.out));
        EXPECT_EQ("the content\n", contentOf(m_local));
        EXPECT_EQ("SFtpClient #1 level 1 SFtpClient::CheckFileSizeBeforeDownload() "
                  "remoteFileSizeByte =12, fileSizeLimit = 53687091200\n"
                  "SFtpClient #0 level 1 sftpSetCertTmp() Establish SSL with cert\n"
                  "SFtpClient #1 level 2 CurlSFtpResponse::DownLoadSFtpFile() DownLoadSFtpFile():end \n",
                  recordsIn(result.err));
        EXPECT_TRUE(std::filesystem::remove(m_local));
    }
}

// Without a certificate to go by, the configuration service decides.
TEST_F(ExamplesTest, MinimalHostObeysItsCertAuthSwitch)
{
    folder.write("ca.pem", "none");
    serve(TlsMode::Explicit);
    EXPECT_EQ("result 77 ", lastLine(runMinimalHost("/sunday.bak").out).substr(0, 10));
    m_general = "[General]\nCertAuthSwitch=0\n";
    EXPECT_EQ("result 0 ", lastLine(runMinimalHost("/sunday.bak").out));
}

TEST_F(ExamplesTest, OwnHostTrustsNoUnknownServer)
{
    folder.write("ca.pem", "none");
    serve(TlsMode::Explicit);
    EXPECT_EQ("result 77 ", lastLine(runOwnHost("/sunday.bak").out).substr(0, 10));
}

TEST_F(ExamplesTest, EachPrintsItsUsage)
{
    EXPECT_TRUE(
        sameText("usage: HOST_PASSWORD=... minimal-host INI-FILE CA-FILE URL LOCAL-FILE\n", run({MINIMAL_HOST}).err));
    EXPECT_TRUE(exited(2, run({MINIMAL_HOST})));
    EXPECT_TRUE(sameText("usage: HOST_PASSWORD=... own-host CA-FILE URL LOCAL-FILE\n", run({OWN_HOST}).err));
    EXPECT_TRUE(exited(2, run({OWN_HOST})));
}

} // namespace
