#include "harness/Live.h"

#include <TlsContexts.h>

#include <openssl/err.h>
#include <openssl/tls1.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using namespace std::chrono_literals;
using testserver::CertificateAuthority;
using testserver::CertificateOptions;
using testserver::TlsMode;

// The connection test against one server, told by its result: which certificate text lets it through.
class CertificateLive : public Live
{
protected:
    int test()
    {
        serve();
        request.remotePath = url("/");
        return testConnection();
    }

    static bool has(const Lines& records, const std::string& record)
    {
        return std::find(records.begin(), records.end(), record) != records.end();
    }
};

TEST_F(CertificateLive, TheRightCaAsPem)
{
    EXPECT_EQ(0, test());
    EXPECT_EQ(std::vector<Lines>{tlsLogin() + names("LIST", 0) + goodbye()}, sessions());
    EXPECT_EQ(
        Lines({"1 CurlSFtpClient::TestSConnect(): begin test sftp connection",
               "1 CurlSFtpClient::TestSConnect(): == remotePath is: " + url("/"),
               "1 sftpSetCertTmp(): Establish SSL with cert", "1 CurlSFtpClient::TestSConnect(): errorCode is: 0"}),
        live::takeRecords());
}

TEST_F(CertificateLive, TheRightCaAsDer)
{
    request.caCert = authority.certificateDer();
    EXPECT_EQ(0, test());
}

TEST_F(CertificateLive, TheFirstOfTwoCounts)
{
    request.caCert += CertificateAuthority("Another CA").certificatePem();
    EXPECT_EQ(0, test());
}

TEST_F(CertificateLive, TheSecondOfTwoDoesNot)
{
    request.caCert = CertificateAuthority("Another CA").certificatePem() + request.caCert;
    EXPECT_EQ(60, test());
}

TEST_F(CertificateLive, AWrongCa)
{
    request.caCert = CertificateAuthority("Another CA").certificatePem();
    EXPECT_EQ(60, test());
    EXPECT_EQ(std::vector<Lines>({greeting() + Lines({"> AUTH SSL", "< 234 TLS next", "= no TLS on control"})}),
              sessions());
}

TEST_F(CertificateLive, UnreadableText)
{
    request.caCert = "no certificate";
    EXPECT_EQ(77, test());
    const Lines records = live::takeRecords();
    EXPECT_TRUE(has(records, "1 sftpConvToX509(): pCert is nullptr"));
    EXPECT_TRUE(has(records, "4 sftp_sslCtx_function(): sslCtx_function, convToX509 failed."));
}

TEST_F(CertificateLive, EmptyText)
{
    request.caCert = "";
    EXPECT_EQ(77, test());
}

TEST_F(CertificateLive, NoneWithTheSwitchOff)
{
    live::setCertAuthSwitch(0);
    request.caCert = "none";
    EXPECT_EQ(0, test());
    EXPECT_TRUE(has(live::takeRecords(), "1 sftpSetCertTmp(): Establish SSL without cert:none"));
    EXPECT_EQ(std::vector<Lines>{tlsLogin() + names("LIST", 0) + goodbye()}, sessions());
}

TEST_F(CertificateLive, NoneWithTheSwitchOn)
{
    request.caCert = "none";
    EXPECT_EQ(77, test());
}

TEST_F(CertificateLive, AnExpiredCertificate)
{
    CertificateOptions expired;
    expired.notBefore = -48h;
    expired.notAfter = -24h;
    config.certificate = authority.issue(expired);
    EXPECT_EQ(60, test());
}

TEST_F(CertificateLive, ACertificateThatIsNotYetValid)
{
    CertificateOptions early;
    early.notBefore = 24h;
    early.notAfter = 48h;
    config.certificate = authority.issue(early);
    EXPECT_EQ(60, test());
}

TEST_F(CertificateLive, ASelfSignedCertificate)
{
    config.certificate = testserver::makeSelfSigned();
    EXPECT_EQ(60, test());
}

TEST_F(CertificateLive, TheHostNameIsNotCompared)
{
    CertificateOptions wrong;
    wrong.dnsNames = {"elsewhere.example"};
    wrong.addresses = {};
    config.certificate = authority.issue(wrong);
    EXPECT_EQ(0, test());
}

TEST_F(CertificateLive, ImplicitTls)
{
    config.tls = TlsMode::Implicit;
    EXPECT_EQ(0, test());
    EXPECT_EQ(std::vector<Lines>{implicitLogin() + names("LIST", 0) + goodbye()}, sessions());
}

TEST_F(CertificateLive, AServerWithoutTls)
{
    config.tls = TlsMode::Plain;
    EXPECT_EQ(64, test());
    EXPECT_EQ(std::vector<Lines>(
                  {greeting() + Lines({"> AUTH SSL", "< 502 no TLS here", "> AUTH TLS", "< 502 no TLS here"})}),
              sessions());
}

// A TLS connection that a host has of its own: both ends in this thread, the handshake done.
class HostsConnection
{
public:
    explicit HostsConnection(const testserver::Certificate& certificate)
        : m_contexts(configOf(certificate)), m_trusting(SSL_CTX_new(TLS_client_method())),
          m_host(SSL_new(m_trusting.get())), m_peer(SSL_new(m_contexts.control.get()))
    {
        BIO* ends[2] = {};
        BIO_new_bio_pair(&ends[0], 0, &ends[1], 0);
        SSL_set_bio(m_host.get(), ends[0], ends[0]);
        SSL_set_bio(m_peer.get(), ends[1], ends[1]);
        SSL_set_connect_state(m_host.get());
        SSL_set_accept_state(m_peer.get());
        for (int flight = 0; flight < 4; ++flight) {
            SSL_do_handshake(m_host.get());
            SSL_do_handshake(m_peer.get());
        }
        EXPECT_TRUE(SSL_is_init_finished(m_host.get()) && SSL_is_init_finished(m_peer.get()));
    }

    // What the host learns when it reads, and nothing has come.
    int errorOfReading() const
    {
        char byte = 0;
        return SSL_get_error(m_host.get(), SSL_read(m_host.get(), &byte, 1));
    }

private:
    static testserver::ServerConfig configOf(const testserver::Certificate& certificate)
    {
        testserver::ServerConfig config;
        config.tls = TlsMode::Explicit;
        config.certificate = certificate;
        return config;
    }

    const testserver::TlsContexts m_contexts;
    const testserver::TlsContext m_trusting; ///< trusts anybody, as OpenSSL does unless it is told otherwise
    const testserver::Tls m_host;
    const testserver::Tls m_peer;
};

TEST_F(CertificateLive, AFailureSpoilsTheHostsOwnConnectionsUntilTheErrorsAreCleared)
{
    const HostsConnection hosts(authority.issue());
    for (const auto& [text, code] : {std::pair(CertificateAuthority("Another CA").certificatePem(), 60),
                                     std::pair(std::string("no certificate"), 77)}) {
        request.caCert = text;
        ERR_clear_error();
        EXPECT_EQ(SSL_ERROR_WANT_READ, hosts.errorOfReading());
        EXPECT_EQ(code, test());
        EXPECT_EQ(SSL_ERROR_SSL, hosts.errorOfReading()) << code;
        ERR_clear_error();
        EXPECT_EQ(SSL_ERROR_WANT_READ, hosts.errorOfReading()) << code;
    }
}

TEST_F(CertificateLive, NobodyListening)
{
    serve();
    request.remotePath = url("/");
    stopServing();
    EXPECT_EQ(7, testConnection());
}

TEST_F(CertificateLive, AWrongPassword)
{
    request.password = "wrong";
    EXPECT_EQ(67, test());
    EXPECT_EQ(
        std::vector<Lines>({greeting() + Lines({"> AUTH SSL", "< 234 TLS next", "= TLS on control", "> USER backup",
                                                "< 331 password please", "> PASS ****", "< 530 login incorrect"})}),
        sessions());
}

TEST_F(CertificateLive, AMissingDirectoryKeepsItsCode)
{
    serve();
    request.remotePath = url("/missing/");
    EXPECT_EQ(9, testConnection());
}

TEST_F(CertificateLive, TheListingGoesToStandardOutput)
{
    writeFile(served("a.bak"), "content");
    EXPECT_EQ(0, test());
    EXPECT_EQ("-rw-r--r-- 1 backup backup 7 Jan 01 00:00 a.bak\n", out->content());
}

} // namespace
