#ifndef SUPPORT_CERTIFICATES_H
#define SUPPORT_CERTIFICATES_H

#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace certificates {

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};
using Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using Context = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX, SSL_CTX_free>>;

/// A self-signed certificate that is known by its serial number.
Certificate make(long serial);

std::string pemOf(X509* cert);
std::string derOf(X509* cert);

/// The serial numbers of the certificates in a context's store, in its order, each followed by a blank.
std::string serialsIn(SSL_CTX* context);

} // namespace certificates

#endif
