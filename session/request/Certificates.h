#ifndef SFTPCLIENT_SESSION_CERTIFICATES_H
#define SFTPCLIENT_SESSION_CERTIFICATES_H

#include <mutex>
#include <string>

namespace session {

/// The certificates of a request's `caCert` as PEM: several as PEM, or one as DER. Empty where there is none, for the
/// machine's trust store. Throws `Failure` with 77 for a text that is no certificate, "none" among them.
std::string trustedCertificates(const std::string& caCert);

/// The same, for requests of which one mostly has the same `caCert` as the last: reading a certificate takes longer
/// than all else that a short call computes. Any number of threads may ask at once.
class CertificateReader
{
public:
    std::string trusted(const std::string& caCert);

private:
    std::mutex m_mutex; // for all that follows
    std::string m_text; // the last `caCert` that held a certificate
    std::string m_pem;  // what it was read as
};

} // namespace session

#endif
