#include "Bare.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace {

CURLcode addTrustAnchor(CURL* /*handle*/, void* context, void* certificateText)
{
    const auto& text = *static_cast<const std::string*>(certificateText);
    BIO* const bytes = BIO_new_mem_buf(text.data(), static_cast<int>(text.size()));
    X509* const certificate = PEM_read_bio_X509(bytes, nullptr, nullptr, nullptr);
    const int added = X509_STORE_add_cert(SSL_CTX_get_cert_store(static_cast<SSL_CTX*>(context)), certificate);
    X509_free(certificate);
    BIO_free(bytes);
    return added == 1 ? CURLE_OK : CURLE_FAILED_INIT;
}

} // namespace

void aim(const Handle& handle, const SFtpRequest& request)
{
    set(handle, CURLOPT_URL, request.remotePath.c_str());
    set(handle, CURLOPT_PORT, static_cast<long>(request.port));
    set(handle, CURLOPT_USERPWD, (request.userName + ":" + request.password).c_str());
}

void requireTls(const Handle& handle, const SFtpRequest& request)
{
    set(handle, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_DEFAULT));
    set(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    set(handle, CURLOPT_SSLCERTTYPE, "PEM");
    set(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    set(handle, CURLOPT_SSL_CTX_DATA, &request.caCert);
    set(handle, CURLOPT_SSL_CTX_FUNCTION, addTrustAnchor);
    set(handle, CURLOPT_SSL_VERIFYHOST, 0L);
}

size_t writeToFile(void* bytes, size_t size, size_t count, void* file)
{
    return fwrite(bytes, size, count, static_cast<FILE*>(file));
}
