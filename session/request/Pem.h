#ifndef SFTPCLIENT_SESSION_PEM_H
#define SFTPCLIENT_SESSION_PEM_H

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <memory>
#include <new>
#include <string>

namespace session {

/// Whether a text holds a certificate as PEM. One as DER may hold PEM's words, in a name, say.
inline bool isPem(const std::string& text)
{
    if (text.find("-----BEGIN") == std::string::npos) {
        return false;
    }
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> memory(
        BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free_all);
    if (!memory) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr), X509_free);
    return certificate != nullptr;
}

} // namespace session

#endif
