// Certificate text: as it is converted, and on its way through the hook into a TLS context.
#include "harness/Require.h"

#include "support/Certificates.h"
#include "support/LiveHost.h"

#include "tls/TlsTrust.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <cstdint>

namespace {

int anchorsOf(SSL_CTX* context) { return sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(context))); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    X509* found = nullptr;
    const SecuritySS_RC converted = sftpConvToX509(text, found);
    const certificates::Certificate certificate(found);
    require((converted == SECURITYSS_SUCCESS) == (certificate != nullptr),
            "a success gives a certificate, and only that");

    const certificates::Context context(SSL_CTX_new(TLS_client_method()));
    const CURLcode taken = sftp_sslCtx_function(nullptr, context.get(), &text);
    if (certificate) {
        require(taken == CURLE_OK && anchorsOf(context.get()) == 1, "the certificate becomes a trust anchor");
    } else {
        require(taken == CURLE_SSL_CACERT_BADFILE && anchorsOf(context.get()) == 0, "without one nothing is trusted");
    }
    require(text == std::string(reinterpret_cast<const char*>(data), size), "the text stays as it is");
    ERR_clear_error();
    live::takeRecords(); // otherwise they would grow forever
    return 0;
}
