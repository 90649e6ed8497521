#include "request/Certificates.h"

#include "call/Failure.h"
#include "request/Pem.h"

#include <tls/TlsTrust.h>

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <new>
#include <utility>

namespace session {

namespace {

struct FreeCertificate
{
    void operator()(X509* certificate) const { X509_free(certificate); }
};

using Certificate = std::unique_ptr<X509, FreeCertificate>;
using Memory = std::unique_ptr<BIO, decltype(&BIO_free_all)>;

std::string asPem(X509* certificate)
{
    const Memory memory(BIO_new(BIO_s_mem()), BIO_free_all);
    if (!memory || PEM_write_bio_X509(memory.get(), certificate) != 1) {
        throw std::bad_alloc();
    }
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    return std::string(bytes, static_cast<std::size_t>(size));
}

struct FreeItems
{
    void operator()(STACK_OF(X509_INFO) * items) const { sk_X509_INFO_pop_free(items, X509_INFO_free); }
};

// libcurl would read them anew for each TLS connection, which took nearly half of the instructions of a small upload.
// OpenSSL works out what a certificate's extensions say when it is first asked; here it is, before threads share them.
Trust::Certificates certificatesIn(const std::string& pem)
{
    const std::shared_ptr<STACK_OF(X509)> certificates(sk_X509_new_null(),
                                                       [](STACK_OF(X509) * all) { sk_X509_pop_free(all, X509_free); });
    const Memory memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), BIO_free_all);
    if (!certificates || !memory) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<STACK_OF(X509_INFO), FreeItems> items(
        PEM_X509_INFO_read_bio(memory.get(), nullptr, nullptr, nullptr));
    if (!items) {
        throw refusal(CURLE_SSL_CACERT_BADFILE, "one of the certificates in caCert cannot be read");
    }
    for (int i = 0; i < sk_X509_INFO_num(items.get()); ++i) {
        X509*& certificate = sk_X509_INFO_value(items.get(), i)->x509;
        if (certificate == nullptr) {
            continue;
        }
        X509_check_purpose(certificate, -1, 0);
        if (sk_X509_push(certificates.get(), certificate) == 0) {
            throw std::bad_alloc();
        }
        certificate = nullptr; // it has another owner now
    }
    return certificates;
}

} // namespace

std::string trustedCertificates(const std::string& caCert)
{
    if (caCert.empty()) {
        return {};
    }
    X509* read = nullptr;
    const bool isOne = sftpConvToX509(caCert, read) == SECURITYSS_SUCCESS;
    const Certificate certificate(read);
    if (!isOne) {
        throw refusal(CURLE_SSL_CACERT_BADFILE,
                      caCert == "none" ? "caCert is \"none\", and the host's configuration demands a certificate "
                                         "(CertAuthSwitch in section General)"
                                       : "caCert holds no certificate, neither as PEM nor as DER");
    }
    return isPem(caCert) ? caCert : asPem(certificate.get());
}

// Each context has a store of its own, because libcurl changes it, whenever it likes. As with libcurl, a certificate
// need not be its own issuer to be trusted.
bool trustIn(SSL_CTX* context, const Trust& trust) noexcept
{
    std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(), X509_STORE_free);
    bool isWhole = store && X509_STORE_set_flags(store.get(), X509_V_FLAG_PARTIAL_CHAIN) == 1;
    for (int i = 0; isWhole && i < sk_X509_num(trust.certificates.get()); ++i) {
        isWhole = X509_STORE_add_cert(store.get(), sk_X509_value(trust.certificates.get(), i)) == 1;
    }
    if (isWhole) {
        SSL_CTX_set_cert_store(context, store.release());
    }
    return isWhole;
}

Trust CertificateReader::trusted(const std::string& caCert)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (caCert == m_text) {
            return m_trust;
        }
    }
    Trust trust{trustedCertificates(caCert), nullptr};
    if (!trust.pem.empty()) {
        trust.certificates = certificatesIn(trust.pem);
    }
    std::string text = caCert;
    Trust kept = trust;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_text.swap(text);
    std::swap(m_trust, kept);
    return trust;
}

} // namespace session
