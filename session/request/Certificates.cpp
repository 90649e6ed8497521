#include "request/Certificates.h"

#include "call/Failure.h"
#include "request/Pem.h"

#include <tls/TlsTrust.h>

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>
#include <new>

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

std::string CertificateReader::trusted(const std::string& caCert)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (caCert == m_text) {
            return m_pem;
        }
    }
    std::string pem = trustedCertificates(caCert);
    std::string text = caCert;
    std::string kept = pem;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_text.swap(text);
    m_pem.swap(kept);
    return pem;
}

} // namespace session
