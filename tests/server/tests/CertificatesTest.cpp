#include <Certificates.h>
#include <OpenSslObjects.h>

#include <gtest/gtest.h>

#include <openssl/pem.h>

namespace {

using namespace testserver;

Cert certOf(const std::string& pem)
{
    const Memory memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return Cert(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
}

Key keyOf(const std::string& pem)
{
    const Memory memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return Key(PEM_read_bio_PrivateKey(memory.get(), nullptr, nullptr, nullptr));
}

using Store = std::unique_ptr<X509_STORE, Releaser<X509_STORE, X509_STORE_free>>;
using Context = std::unique_ptr<X509_STORE_CTX, Releaser<X509_STORE_CTX, X509_STORE_CTX_free>>;

// The verdict of a client that trusts `anchor` and expects the server to be `host`.
int verdict(const std::string& anchor, const std::string& pem, const char* host = "localhost")
{
    const Store store(X509_STORE_new());
    const Context context(X509_STORE_CTX_new());
    const Cert trusted = certOf(anchor);
    const Cert cert = certOf(pem);
    X509_STORE_add_cert(store.get(), trusted.get());
    X509_STORE_CTX_init(context.get(), store.get(), cert.get(), nullptr);
    X509_STORE_CTX_set_default(context.get(), "ssl_server");
    X509_VERIFY_PARAM_set_flags(X509_STORE_CTX_get0_param(context.get()), X509_V_FLAG_X509_STRICT);
    X509_VERIFY_PARAM_set1_host(X509_STORE_CTX_get0_param(context.get()), host, 0);
    X509_verify_cert(context.get());
    return X509_STORE_CTX_get_error(context.get());
}

class CertificatesTest : public testing::Test
{
protected:
    CertificateAuthority authority;
    std::string anchor = authority.certificatePem();
};

TEST_F(CertificatesTest, ACertificateOfTheAuthorityIsTrusted)
{
    const Certificate server = authority.issue();
    EXPECT_EQ(X509_V_OK, verdict(anchor, server.certificatePem));
    EXPECT_EQ(1, X509_check_private_key(certOf(server.certificatePem).get(), keyOf(server.privateKeyPem).get()));
}

TEST_F(CertificatesTest, AnotherAuthorityOfTheSameNameIsNotTrusted)
{
    EXPECT_NE(X509_V_OK, verdict(CertificateAuthority().certificatePem(), authority.issue().certificatePem));
}

TEST_F(CertificatesTest, HostNames)
{
    CertificateOptions options;
    options.dnsNames = {"one.example", "two.example"};
    options.addresses = {};
    const std::string pem = authority.issue(options).certificatePem;
    EXPECT_EQ(X509_V_OK, verdict(anchor, pem, "one.example"));
    EXPECT_EQ(X509_V_OK, verdict(anchor, pem, "two.example"));
    EXPECT_EQ(X509_V_ERR_HOSTNAME_MISMATCH, verdict(anchor, pem));
}

TEST_F(CertificatesTest, WithoutAnyName)
{
    CertificateOptions options;
    options.dnsNames = {};
    options.addresses = {};
    EXPECT_EQ(X509_V_ERR_HOSTNAME_MISMATCH, verdict(anchor, authority.issue(options).certificatePem));
}

TEST_F(CertificatesTest, Addresses)
{
    const Cert cert = certOf(authority.issue().certificatePem);
    EXPECT_EQ(1, X509_check_ip_asc(cert.get(), "127.0.0.1", 0));
    EXPECT_EQ(1, X509_check_ip_asc(cert.get(), "::1", 0));
    EXPECT_EQ(0, X509_check_ip_asc(cert.get(), "127.0.0.2", 0));
}

TEST_F(CertificatesTest, AServerCertificateCannotIssueOthers)
{
    EXPECT_EQ(0, X509_check_ca(certOf(authority.issue().certificatePem).get()));
    EXPECT_EQ(1, X509_check_ca(certOf(anchor).get()));
}

TEST_F(CertificatesTest, DerIsTheSameCertificate)
{
    const std::string der = authority.certificateDer();
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
    const Cert cert(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
    ASSERT_NE(nullptr, cert);
    EXPECT_EQ(0, X509_cmp(cert.get(), certOf(anchor).get()));
}

TEST_F(CertificatesTest, SerialNumbersDiffer)
{
    const Cert one = certOf(authority.issue().certificatePem);
    const Cert two = certOf(authority.issue().certificatePem);
    EXPECT_NE(0, ASN1_INTEGER_cmp(X509_get0_serialNumber(one.get()), X509_get0_serialNumber(two.get())));
}

} // namespace
