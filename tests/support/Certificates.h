#ifndef SUPPORT_CERTIFICATES_H
#define SUPPORT_CERTIFICATES_H

#include "server/OpenSslObjects.h"

#include <string>

namespace certificates {

using Certificate = testserver::Cert;
using Context = testserver::TlsContext;

/// A self-signed certificate that is known by its serial number.
Certificate make(long serial);

std::string pemOf(X509* cert);
std::string derOf(X509* cert);

/// The serial numbers of the certificates in a context's store, in its order, each followed by a blank.
std::string serialsIn(SSL_CTX* context);

} // namespace certificates

#endif
