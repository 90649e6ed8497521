#include "harness/Live.h"

#include <curl/curl.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

// libcurl's initialisation is the host's duty; here the test program is the host.
class LibcurlEnvironment : public testing::Environment
{
public:
    void SetUp() override { ASSERT_EQ(CURLE_OK, curl_global_init(CURL_GLOBAL_DEFAULT)); }
    void TearDown() override { curl_global_cleanup(); }
};

testing::Environment* const kLibcurl = testing::AddGlobalTestEnvironment(new LibcurlEnvironment);

constexpr const char* kDefaultTrust = "SFTPCLIENT_DEFAULT_TRUST";

} // namespace

Live::Live() : out(std::make_unique<Redirection>(stdout)), err(std::make_unique<Redirection>(stderr))
{
    std::string pattern = testing::TempDir() + "live-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("No folder can be made in " + testing::TempDir());
    }
    m_folder = pattern;
    std::filesystem::create_directory(served(""));
    std::filesystem::create_directory(local(""));
    config.root = served("");
    config.user = "backup";
    config.password = "correct horse battery";
    config.certificate = authority.issue();
    request.userName = config.user;
    request.password = config.password;
    request.caCert = authority.certificatePem();
    request.localPath = local("file");
    live::setCertAuthSwitch(1);
    live::takeRecords();
    // In place of the machine's own store: a test must not depend on it, nor on the time that it takes to read.
    trustByDefault(testserver::CertificateAuthority("Nobody's CA").certificatePem());
}

Live::~Live()
{
    if (HasFailure()) {
        // What the test found wrong went the redirected way too.
        const std::string printed = out->content();
        out.reset();
        std::cout << printed << std::flush;
    }
    m_server.reset();
    unsetenv(kDefaultTrust);
    std::filesystem::remove_all(m_folder);
}

void Live::serve()
{
    m_server = std::make_unique<testserver::FtpServer>(config);
    request.port = m_server->port();
}

std::string Live::url(const std::string& path) const
{
    const bool implicit = config.tls == testserver::TlsMode::Implicit;
    return (implicit ? "ftps://localhost:" : "ftp://localhost:") + std::to_string(request.port) + path;
}

void Live::trustByDefault(const std::string& caPem)
{
    writeFile(local("default-trust.pem"), caPem);
    setenv(kDefaultTrust, local("default-trust.pem").c_str(), 1);
}

std::string Live::contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return file ? content.str() : "no such file";
}

void Live::writeFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

void Live::makeSparse(const std::string& path, off_t size)
{
    writeFile(path, "");
    ASSERT_EQ(0, truncate(path.c_str(), size));
}

bool Live::exists(const std::string& path) { return std::filesystem::exists(path); }

int Live::testConnection() { return ISFtpClient::CreateClient()->TestSConnect(request, 90); }

Lines Live::tlsLogin()
{
    return greeting() +
           Lines{
               "> AUTH SSL",           "< 234 TLS next",  "= TLS on control", "> USER backup", "< 331 password please",
               "> PASS ****",          "< 230 logged in", "> PBSZ 0",         "< 200 PBSZ=0",  "> PROT P",
               "< 200 protection set", "> PWD",           "< 257 \"/\""};
}

Lines Live::clearLogin()
{
    return greeting() +
           Lines{"> USER backup", "< 331 password please", "> PASS ****", "< 230 logged in", "> PWD", "< 257 \"/\""};
}

Lines Live::implicitLogin()
{
    return Lines{"= TLS on control"} + greeting() +
           Lines{"> USER backup", "< 331 password please", "> PASS ****", "< 230 logged in", "> PBSZ 0", "< 200 PBSZ=0",
                 "> PROT P",      "< 200 protection set",  "> PWD",       "< 257 \"/\""};
}

Lines Live::names(const std::string& verb, std::size_t bytes)
{
    return {"> EPSV",        "< 229 Entering Extended Passive Mode (|||PORT|)",
            "> TYPE A",      "< 200 type set",
            "> " + verb,     "< 150 data follows",
            "= TLS on data", "= " + std::to_string(bytes) + " bytes sent",
            "< 226 done"};
}

Lines Live::size(const std::string& name, const std::string& reply)
{
    return {"> MDTM " + name, "< 213 20260101000000", "> TYPE I", "< 200 type set",
            "> SIZE " + name, "< " + reply,           "> REST 0", "< 350 restart marked"};
}
