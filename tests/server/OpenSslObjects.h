#ifndef TESTSERVER_OPENSSLOBJECTS_H
#define TESTSERVER_OPENSSLOBJECTS_H

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>

namespace testserver {

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};

using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY, EVP_PKEY_free>>;
using Cert = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Releaser<X509_EXTENSION, X509_EXTENSION_free>>;
using Memory = std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>>;
using TlsContext = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX, SSL_CTX_free>>;
using Tls = std::unique_ptr<SSL, Releaser<SSL, SSL_free>>;

} // namespace testserver

#endif
