#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <Certificates.h>
#include <CurlProcess.h>
#include <FtpServer.h>
#include <HostConfiguration.h>
#include <SecuritySS.h>

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/tls1.h>

#include <memory>
#include <string>

namespace {

/// A server, and a handle that logs in to it; libcurl's trace shows what the handshake negotiated.
class SecuritySSTest : public testing::Test
{
protected:
    SecuritySSTest() : m_curl(curl_easy_init())
    {
        m_server.root = m_folder.path();
        m_server.tls = testserver::TlsMode::Implicit;
        m_server.password = "secret";
        m_server.certificate = m_authority.issue();
        HostConfiguration::instance().load(m_folder.write("empty.ini", ""));
    }

    void configure(const std::string& section)
    {
        HostConfiguration::instance().load(m_folder.write("test.ini", "[Security]\n" + section));
    }

    SecuritySS_RC enrich()
    {
        std::string cert = "none";
        const SecuritySS_RC answer = SecuritySS::enrichSSL(m_curl.get(), cert);
        EXPECT_EQ("none", cert);
        return answer;
    }

    /// The result of logging in to a server that supports `lowest` to `highest`.
    CURLcode connect(int lowest, int highest)
    {
        m_server.minTlsVersion = lowest;
        m_server.maxTlsVersion = highest;
        const testserver::FtpServer server(m_server);
        const std::string url = "ftps://localhost:" + std::to_string(server.port()) + "/";
        const std::string ca = m_folder.write("ca.pem", m_authority.certificatePem());
        CURL* const curl = m_curl.get();
        curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        curl_easy_setopt(curl, CURLOPT_USERPWD, "backup:secret");
        curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
        curl_easy_setopt(curl, CURLOPT_CAINFO, ca.c_str());
        curl_easy_setopt(curl, CURLOPT_FRESH_CONNECT, 1L);
        curl_easy_setopt(curl, CURLOPT_FORBID_REUSE, 1L);
        curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L);
        curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, trace);
        curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &m_trace);
        m_trace.clear();
        return curl_easy_perform(curl);
    }

    CURLcode connect() { return connect(0, 0); }

    /// "VERSION / CIPHER", as negotiated. Later releases of libcurl add more, behind another slash.
    std::string agreed() const
    {
        const std::string mark = "SSL connection using ";
        const std::size_t found = m_trace.find(mark);
        if (found == std::string::npos) {
            return "nothing";
        }
        const std::size_t begin = found + mark.size();
        const std::string line = m_trace.substr(begin, m_trace.find('\n', begin) - begin);
        return line.substr(0, line.find(" / ", line.find(" / ") + 1));
    }

    static int trace(CURL* /*curl*/, curl_infotype kind, char* text, std::size_t size, void* all)
    {
        if (kind == CURLINFO_TEXT) {
            static_cast<std::string*>(all)->append(text, size);
        }
        return 0;
    }

    struct Cleanup
    {
        void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
    };

    TemporaryFolder m_folder;
    LogCapture m_log;
    CurlProcess m_process;
    testserver::CertificateAuthority m_authority;
    testserver::ServerConfig m_server;
    std::unique_ptr<CURL, Cleanup> m_curl;
    std::string m_trace;
};

// OpenSSL itself refuses TLS 1.1 by default.
constexpr char kEverything[] = "ALL:@SECLEVEL=0";

TEST_F(SecuritySSTest, LeavesTheCiphersToLibcurlWithoutAConfiguration)
{
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_OK, connect());
    EXPECT_EQ("TLSv1.3 / TLS_AES_256_GCM_SHA384", agreed());
    EXPECT_EQ(CURLE_OK, connect(TLS1_2_VERSION, TLS1_2_VERSION));
    EXPECT_EQ("TLSv1.2 / ECDHE-ECDSA-AES256-GCM-SHA384", agreed());
    EXPECT_EQ("", m_log.text());
}

TEST_F(SecuritySSTest, RefusesAServerLimitedToTls11)
{
    // Without the security service, the login that it must prevent succeeds.
    curl_easy_setopt(m_curl.get(), CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_0));
    curl_easy_setopt(m_curl.get(), CURLOPT_SSL_CIPHER_LIST, kEverything);
    ASSERT_EQ(CURLE_OK, connect(TLS1_1_VERSION, TLS1_1_VERSION));
    ASSERT_EQ("TLSv1.1 /", agreed().substr(0, 9));

    configure(std::string("CipherList=") + kEverything + "\n");
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_SSL_CONNECT_ERROR, connect(TLS1_1_VERSION, TLS1_1_VERSION));
    EXPECT_EQ("nothing", agreed());
    EXPECT_EQ(CURLE_OK, connect(TLS1_1_VERSION, TLS1_2_VERSION));
    EXPECT_EQ("TLSv1.2 /", agreed().substr(0, 9));
}

TEST_F(SecuritySSTest, SetsTheCipherListOfTheConfiguration)
{
    configure("CipherList=ECDHE-ECDSA-CHACHA20-POLY1305:ECDHE-ECDSA-AES128-GCM-SHA256\n");
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_OK, connect(TLS1_2_VERSION, TLS1_2_VERSION));
    EXPECT_EQ("TLSv1.2 / ECDHE-ECDSA-CHACHA20-POLY1305", agreed());
}

TEST_F(SecuritySSTest, SetsTheTls13CiphersOfTheConfiguration)
{
    configure("Tls13Ciphers=TLS_CHACHA20_POLY1305_SHA256\n");
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_OK, connect(TLS1_3_VERSION, TLS1_3_VERSION));
    EXPECT_EQ("TLSv1.3 / TLS_CHACHA20_POLY1305_SHA256", agreed());
}

TEST_F(SecuritySSTest, RefusesAServerWithoutACommonCipher)
{
    // The server's certificate has no RSA key.
    configure("CipherList=ECDHE-RSA-AES256-GCM-SHA384\n");
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_SSL_CONNECT_ERROR, connect(TLS1_2_VERSION, TLS1_2_VERSION));
    EXPECT_EQ("nothing", agreed());
}

TEST_F(SecuritySSTest, LeavesAnUnknownCipherToTheConnection)
{
    configure("CipherList=NO-SUCH-CIPHER\n");
    EXPECT_EQ(SECURITYSS_SUCCESS, enrich());
    EXPECT_EQ(CURLE_SSL_CIPHER, connect());
}

TEST_F(SecuritySSTest, ReturnsFailureIfLibcurlRefuses)
{
    std::string cert = "none";
    EXPECT_EQ(SECURITYSS_FAILURE, SecuritySS::enrichSSL(nullptr, cert));
    const std::string record = m_log.withoutTimes();
    EXPECT_EQ(0U, record.find("TIME error SFtpClientHost request=0 SecuritySS::enrichSSL():")) << record;
    EXPECT_TRUE(holds(" The TLS settings cannot be made: libcurl refuses TLS 1.2 as the minimum version: A libcurl "
                      "function was given a bad argument. Do not use this handle.\n",
                      record));
}

// libcurl accepts no text of more than 8000000 bytes.
TEST_F(SecuritySSTest, NamesTheListThatLibcurlRefuses)
{
    for (const std::string key : {"CipherList", "Tls13Ciphers"}) {
        SCOPED_TRACE(key);
        const LogCapture log;
        configure(key + "=" + std::string(8000001, 'x') + "\n");
        EXPECT_EQ(SECURITYSS_FAILURE, enrich());
        EXPECT_TRUE(holds("libcurl refuses " + key + " of section Security: ", log.text()));
    }
}

TEST_F(SecuritySSTest, ReturnsFailureForAMisspeltKey)
{
    configure("Cipherlist=ECDHE-ECDSA-AES256-GCM-SHA384\n");
    EXPECT_EQ(SECURITYSS_FAILURE, enrich());
    EXPECT_TRUE(holds("[Security] has a key \"Cipherlist\", but knows only CipherList, Tls13Ciphers", m_log.text()));
}

} // namespace
