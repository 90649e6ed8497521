#ifndef SFTPCLIENT_SESSION_CERTIFICATES_H
#define SFTPCLIENT_SESSION_CERTIFICATES_H

#include <string>

namespace session {

/// The certificates of a request's `caCert` as PEM: several as PEM, or one as DER. Empty where there is none, for the
/// machine's trust store. Throws `Failure` with 77 for a text that is no certificate, "none" among them.
std::string trustedCertificates(const std::string& caCert);

} // namespace session

#endif
