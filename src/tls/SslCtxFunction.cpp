#include "log/LogStatement.h"
#include "tls/TlsTrust.h"

#include <openssl/ssl.h>

#include <exception>
#include <memory>

namespace {

struct X509Release
{
    void operator()(X509* cert) const { X509_free(cert); }
};

} // namespace

// OpenSSL's error queue is left as it is, on failure too: the host reads it, and clears it with ERR_clear_error().
CURLcode sftp_sslCtx_function(CURL* /*curl*/, void* sslctx, void* parm)
try {
    const std::string certText = *static_cast<const std::string*>(parm);
    X509* converted = nullptr;
    const SecuritySS_RC conversion = sftpConvToX509(certText, converted);
    // The store takes a reference of its own, so this one is given up on every path.
    const std::unique_ptr<X509, X509Release> cert(converted);
    if (conversion != SECURITYSS_SUCCESS) {
        SFTP_LOG(kLogFailure, "sslCtx_function, convToX509 failed.");
        return CURLE_SSL_CACERT_BADFILE;
    }
    X509_STORE* store = SSL_CTX_get_cert_store(static_cast<SSL_CTX*>(sslctx));
    if (store == nullptr) {
        SFTP_LOG(kLogFailure, "sslCtx_function, X509_STORE is NUL.");
        return CURLE_FAILED_INIT;
    }
    if (X509_STORE_add_cert(store, cert.get()) == 0) {
        SFTP_LOG(kLogFailure, "sslCtx_function, add cert failed.");
        return CURLE_FAILED_INIT;
    }
    return CURLE_OK;
} catch (const std::exception&) {
    // libcurl is C: an exception must not unwind it.
    return CURLE_FAILED_INIT;
}
