#ifndef SFTPCLIENT_SESSION_CERTIFICATES_H
#define SFTPCLIENT_SESSION_CERTIFICATES_H

#include <mutex>
#include <string>

namespace session {

/// The certificates in a request's `caCert` (several as PEM, or one as DER), as PEM. Empty if `caCert` is empty, which
/// stands for the machine's trust store. Throws `Failure` with 77 for a text that is not a certificate, such as "none".
std::string trustedCertificates(const std::string& caCert);

/// The same, with a memory of the last `caCert`, because most requests repeat it and reading a certificate takes longer
/// than everything else that a short call computes. For any number of threads.
class CertificateReader
{
public:
    std::string trusted(const std::string& caCert);

private:
    std::mutex m_mutex; // for all of the following
    std::string m_text; // the last `caCert` that held a certificate
    std::string m_pem;  // the result
};

} // namespace session

#endif
