#ifndef SFTPCLIENT_CLI_DOCTOR_OPENSSLOBJECTS_H
#define SFTPCLIENT_CLI_DOCTOR_OPENSSLOBJECTS_H

#include <openssl/bio.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>

namespace doctor {

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};

using X509Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using MemoryBio = std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>>;
using TlsContext = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX, SSL_CTX_free>>;
using TlsSession = std::unique_ptr<SSL, Releaser<SSL, SSL_free>>;

} // namespace doctor

#endif
