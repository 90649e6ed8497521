#include "Certificates.h"

#include <gtest/gtest.h>

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <memory>

namespace {

using namespace testserver;
using namespace std::chrono_literals;

struct Release
{
    void operator()(X509* cert) const { X509_free(cert); }
    void operator()(BIO* memory) const { BIO_free(memory); }
    void operator()(X509_STORE* store) const { X509_STORE_free(store); }
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Release>;

Owned<X509> read(const std::string& pem)
{
    const Owned<BIO> memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return Owned<X509>(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
}

// OpenSSL's verdict on a server certificate when this CA is the trust anchor.
int verify(const std::string& caPem, const std::string& serverPem)
{
    const Owned<X509> ca = read(caPem);
    const Owned<X509> server = read(serverPem);
    const Owned<X509_STORE> store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), ca.get());
    const Owned<X509_STORE_CTX> context(X509_STORE_CTX_new());
    X509_STORE_CTX_init(context.get(), store.get(), server.get(), nullptr);
    X509_STORE_CTX_set_purpose(context.get(), X509_PURPOSE_SSL_SERVER);
    return X509_verify_cert(context.get()) == 1 ? X509_V_OK : X509_STORE_CTX_get_error(context.get());
}

TEST(Certificates, TheCaVouchesForWhatItIssued)
{
    const CertificateAuthority authority;
    const Certificate server = authority.issue();
    EXPECT_EQ(X509_V_OK, verify(authority.certificatePem(), server.certificatePem));
    EXPECT_NE(X509_V_OK, verify(CertificateAuthority("Another").certificatePem(), server.certificatePem));
}

TEST(Certificates, ServerCertificatesNameTheirHosts)
{
    const Owned<X509> cert = read(CertificateAuthority().issue().certificatePem);
    EXPECT_EQ(1, X509_check_host(cert.get(), "localhost", 0, 0, nullptr));
    EXPECT_EQ(1, X509_check_ip_asc(cert.get(), "127.0.0.1", 0));
    EXPECT_EQ(1, X509_check_ip_asc(cert.get(), "::1", 0));
    EXPECT_EQ(0, X509_check_host(cert.get(), "elsewhere.example", 0, 0, nullptr));
}

TEST(Certificates, ValidityIsToOrder)
{
    const CertificateAuthority authority;
    CertificateOptions options;
    options.notBefore = -48h;
    options.notAfter = -24h;
    EXPECT_EQ(X509_V_ERR_CERT_HAS_EXPIRED, verify(authority.certificatePem(), authority.issue(options).certificatePem));
    options.notBefore = 24h;
    options.notAfter = 48h;
    EXPECT_EQ(X509_V_ERR_CERT_NOT_YET_VALID,
              verify(authority.certificatePem(), authority.issue(options).certificatePem));
}

TEST(Certificates, ASelfSignedOneHasNoCa)
{
    EXPECT_EQ(X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT,
              verify(CertificateAuthority().certificatePem(), makeSelfSigned().certificatePem));
}

TEST(Certificates, DerAndPemAreTheSame)
{
    const CertificateAuthority authority;
    const std::string der = authority.certificateDer();
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
    const Owned<X509> fromDer(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
    const Owned<X509> fromPem = read(authority.certificatePem());
    EXPECT_EQ(0, X509_cmp(fromDer.get(), fromPem.get()));
}

} // namespace
