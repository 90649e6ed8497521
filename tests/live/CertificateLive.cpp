#include "support/Codes.h"
#include "support/CurlRelease.h"
#include "support/Live.h"

#include <TlsContexts.h>

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <utility>

namespace {

using testserver::CertificateAuthority;
using testserver::TlsMode;

// The connection test against one server: its result shows which certificate text is trusted.
class CertificateLive : public Live
{
protected:
    std::string test()
    {
        serve();
        request.remotePath = url("/");
        return nameOf(testConnection());
    }
};

TEST_F(CertificateLive, TheRightCaAsPem)
{
    EXPECT_EQ("CURLE_OK", test());
    EXPECT_TRUE(sameSessions({tlsLogin() + names("LIST", 0) + quit()}, sessions()));
    EXPECT_TRUE(
        sameLines({"1 CurlSFtpClient::TestSConnect(): begin test sftp connection",
                   "1 CurlSFtpClient::TestSConnect(): == remotePath is: " + url("/"),
                   "1 sftpSetCertTmp(): Establish SSL with cert", "1 CurlSFtpClient::TestSConnect(): errorCode is: 0"},
                  live::takeRecords()));
}

TEST_F(CertificateLive, TheRightCaAsDer)
{
    request.caCert = authority.certificateDer();
    EXPECT_EQ("CURLE_OK", test());
}

TEST_F(CertificateLive, TheFirstOfTwoIsTrusted)
{
    request.caCert += CertificateAuthority("Another CA").certificatePem();
    EXPECT_EQ("CURLE_OK", test());
}

TEST_F(CertificateLive, TheSecondOfTwoIsNotTrusted)
{
    request.caCert = CertificateAuthority("Another CA").certificatePem() + request.caCert;
    EXPECT_EQ("CURLE_PEER_FAILED_VERIFICATION", test());
}

TEST_F(CertificateLive, AWrongCa)
{
    request.caCert = CertificateAuthority("Another CA").certificatePem();
    EXPECT_EQ("CURLE_PEER_FAILED_VERIFICATION", test());
    EXPECT_TRUE(
        sameSessions({greeting() + Lines({"> AUTH SSL", "< 234 TLS next", "= no TLS on control"})}, sessions()));
}

TEST_F(CertificateLive, UnreadableText)
{
    request.caCert = "no certificate";
    EXPECT_EQ("CURLE_SSL_CACERT_BADFILE", test());
    const Lines records = live::takeRecords();
    EXPECT_TRUE(hasLine("1 sftpConvToX509(): pCert is nullptr", records));
    EXPECT_TRUE(hasLine("4 sftp_sslCtx_function(): sslCtx_function, convToX509 failed.", records));
}

TEST_F(CertificateLive, EmptyText)
{
    request.caCert = "";
    EXPECT_EQ("CURLE_SSL_CACERT_BADFILE", test());
}

TEST_F(CertificateLive, NoneWithTheSwitchOff)
{
    live::setCertAuthSwitch(0);
    request.caCert = "none";
    EXPECT_EQ("CURLE_OK", test());
    EXPECT_TRUE(hasLine("1 sftpSetCertTmp(): Establish SSL without cert:none", live::takeRecords()));
    EXPECT_TRUE(sameSessions({tlsLogin() + names("LIST", 0) + quit()}, sessions()));
}

TEST_F(CertificateLive, NoneWithTheSwitchOn)
{
    request.caCert = "none";
    EXPECT_EQ("CURLE_SSL_CACERT_BADFILE", test());
}

TEST_F(CertificateLive, ImplicitTls)
{
    config.tls = TlsMode::Implicit;
    EXPECT_EQ("CURLE_OK", test());
    EXPECT_TRUE(sameSessions({implicitLogin() + names("LIST", 0) + quit()}, sessions()));
}

TEST_F(CertificateLive, AServerWithoutTls)
{
    config.tls = TlsMode::Plain;
    EXPECT_EQ("CURLE_USE_SSL_FAILED", test());
    EXPECT_TRUE(sameSessions(
        {greeting() + Lines({"> AUTH SSL", "< 502 no TLS here", "> AUTH TLS", "< 502 no TLS here"})}, sessions()));
}

// The host's own TLS connection: both ends in this thread, the handshake done.
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

    // The error that the host gets when it reads and no data has arrived.
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
    const testserver::TlsContext m_trusting; ///< verifies nothing, OpenSSL's default
    const testserver::Tls m_host;
    const testserver::Tls m_peer;
};

TEST_F(CertificateLive, AFailureSpoilsTheHostsOwnConnectionsUntilTheErrorsAreCleared)
{
    const HostsConnection hosts(authority.issue());
    for (const auto& [text, code] :
         {std::pair(CertificateAuthority("Another CA").certificatePem(), "CURLE_PEER_FAILED_VERIFICATION"),
          std::pair(std::string("no certificate"), "CURLE_SSL_CACERT_BADFILE")}) {
        SCOPED_TRACE(code);
        request.caCert = text;
        ERR_clear_error();
        EXPECT_EQ(SSL_ERROR_WANT_READ, hosts.errorOfReading());
        EXPECT_EQ(code, test());
        // libcurl 8.14 takes the handshake's errors out itself.
        const bool isClean = isCurl814() && code == std::string("CURLE_PEER_FAILED_VERIFICATION");
        EXPECT_EQ(isClean ? SSL_ERROR_WANT_READ : SSL_ERROR_SSL, hosts.errorOfReading());
        ERR_clear_error();
        EXPECT_EQ(SSL_ERROR_WANT_READ, hosts.errorOfReading());
    }
}

TEST_F(CertificateLive, AWrongPassword)
{
    request.password = "wrong";
    EXPECT_EQ("CURLE_LOGIN_DENIED", test());
    EXPECT_TRUE(sameSessions({greeting() + Lines({"> AUTH SSL", "< 234 TLS next", "= TLS on control", "> USER backup",
                                                  "< 331 password please", "> PASS ****", "< 530 login incorrect"})},
                             sessions()));
}

TEST_F(CertificateLive, TheListingGoesToStandardOutput)
{
    writeFile(served("a.bak"), "content");
    EXPECT_EQ("CURLE_OK", test());
    EXPECT_EQ("-rw-r--r-- 1 backup backup 7 Jan 01 00:00 a.bak\n", out->content());
}

} // namespace
