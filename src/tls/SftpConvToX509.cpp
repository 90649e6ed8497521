#include "log/LogStatement.h"
#include "tls/TlsTrust.h"

#include <openssl/pem.h>

#include <memory>

namespace {

struct BioFree
{
    void operator()(BIO* bio) const { BIO_free(bio); }
};
using MemoryBio = std::unique_ptr<BIO, BioFree>;

// Length from the string, not from a terminating zero: DER holds zero bytes.
MemoryBio readFrom(const std::string& text)
{
    return MemoryBio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

} // namespace

SecuritySS_RC sftpConvToX509(const std::string& certText, X509*& cert)
{
    const MemoryBio pem = readFrom(certText);
    if (!pem) {
        SFTP_LOG(kLogDetail, "pBioPem is nullptr");
        return SECURITYSS_FAILURE;
    }
    // A buffer of its own, because the attempt to read PEM uses up the first.
    const MemoryBio der = readFrom(certText);
    if (!der) {
        SFTP_LOG(kLogDetail, "pBioDer is nullptr");
        return SECURITYSS_FAILURE;
    }
    cert = PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr);
    if (cert == nullptr) {
        cert = d2i_X509_bio(der.get(), nullptr);
    }
    if (cert == nullptr) {
        // What both attempts put into OpenSSL's error queue stays there, for the host.
        SFTP_LOG(kLogDetail, "pCert is nullptr");
        return SECURITYSS_FAILURE;
    }
    return SECURITYSS_SUCCESS;
}
