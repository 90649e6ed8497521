#ifndef SFTPCLIENT_SESSION_CERTIFICATES_H
#define SFTPCLIENT_SESSION_CERTIFICATES_H

#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>
#include <mutex>
#include <string>

namespace session {

/// The certificates in a request's `caCert` (several as PEM, or one as DER), as PEM. Empty if `caCert` is empty, which
/// stands for the machine's trust store. Throws `Failure` with 77 for a text that is not a certificate, such as "none".
std::string trustedCertificates(const std::string& caCert);

/// Whom a request trusts: the machine's trust store, or these certificates alone.
struct Trust
{
    using Certificates = std::shared_ptr<const STACK_OF(X509)>;

    std::string pem;           ///< empty: the machine's trust store
    Certificates certificates; ///< the same, read; null where `pem` is empty
};

/// Gives a TLS context a store of these certificates; false if there is no memory. For any number of threads.
/// REQUIRES: there are certificates.
bool trustIn(SSL_CTX* context, const Trust& trust) noexcept;

/// Reads a request's `caCert`, with a memory of the last one, because most requests repeat it and reading a certificate
/// takes longer than everything else that a short call computes. For any number of threads.
class CertificateReader
{
public:
    Trust trusted(const std::string& caCert);

private:
    std::mutex m_mutex; // for all of the following
    std::string m_text; // the last `caCert` that held a certificate
    Trust m_trust;      // the result
};

} // namespace session

#endif
