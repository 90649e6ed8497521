// Certificate text: as it is converted, on its way through the hook into a TLS context, and as a session hands it on.
#include "harness/Require.h"

#include "support/Certificates.h"
#include "support/LiveHost.h"

#include "tls/TlsTrust.h"

#include <call/Failure.h>
#include <request/Certificates.h>

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <cstdint>
#include <optional>

namespace {

int anchorsOf(SSL_CTX* context) { return sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(context))); }

void convert(const std::string& text, certificates::Certificate& certificate)
{
    X509* found = nullptr;
    const SecuritySS_RC converted = sftpConvToX509(text, found);
    certificate.reset(found);
    require((converted == SECURITYSS_SUCCESS) == (certificate != nullptr),
            "a success gives a certificate, and only that");
}

void trust(std::string text, bool isCertificate)
{
    const std::string before = text;
    const certificates::Context context(SSL_CTX_new(TLS_client_method()));
    const CURLcode taken = sftp_sslCtx_function(nullptr, context.get(), &text);
    if (isCertificate) {
        require(taken == CURLE_OK && anchorsOf(context.get()) == 1, "the certificate becomes a trust anchor");
    } else {
        require(taken == CURLE_SSL_CACERT_BADFILE && anchorsOf(context.get()) == 0, "without one nothing is trusted");
    }
    require(text == before, "the text stays as it is");
}

std::optional<std::string> trustedBySession(const std::string& text)
try {
    return session::trustedCertificates(text);
} catch (const session::Failure& failure) {
    require(failure.code() == CURLE_SSL_CACERT_BADFILE, "a text that is no certificate is refused with 77");
    return std::nullopt;
}

// As libcurl reads it.
bool beginsWith(X509* certificate, const std::string& pem)
{
    const testserver::Memory memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    const certificates::Certificate first(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
    return first && X509_cmp(first.get(), certificate) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    certificates::Certificate certificate;
    convert(text, certificate);
    trust(text, certificate != nullptr);
    if (!text.empty()) { // which stands for the machine's trust store
        const std::optional<std::string> pem = trustedBySession(text);
        require(pem.has_value() == (certificate != nullptr), "a session takes what the library takes");
        require(!pem || beginsWith(certificate.get(), *pem), "a session hands on the certificate, as PEM");
    }
    ERR_clear_error();
    live::takeRecords(); // otherwise they would grow forever
    return 0;
}
