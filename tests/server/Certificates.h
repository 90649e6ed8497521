#ifndef TESTSERVER_CERTIFICATES_H
#define TESTSERVER_CERTIFICATES_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace testserver {

/// A certificate and its private key, both as PEM text.
struct Certificate
{
    std::string certificatePem;
    std::string privateKeyPem;
};

struct CertificateOptions
{
    std::vector<std::string> dnsNames = {"localhost"};
    std::vector<std::string> addresses = {"127.0.0.1", "::1"};
    std::chrono::seconds notBefore = std::chrono::hours(-1); ///< from now
    std::chrono::seconds notAfter = std::chrono::hours(24);  ///< from now
    std::string commonName = {};                             ///< empty: one that says what it is
    std::uint64_t serial = 0;                                ///< 0: a random one
};

/// A CA that lives as long as the object: its key is made with it and goes with it. Throws `std::runtime_error`.
class CertificateAuthority
{
public:
    explicit CertificateAuthority(const std::string& commonName = "Test CA");
    ~CertificateAuthority();
    CertificateAuthority(CertificateAuthority&&) noexcept;

    std::string certificatePem() const;
    std::string certificateDer() const;

    /// A server certificate signed by this CA.
    Certificate issue(const CertificateOptions& options = {}) const;

private:
    struct Issuer;
    std::unique_ptr<Issuer> m_issuer;
};

/// A server certificate signed by its own key.
Certificate makeSelfSigned(const CertificateOptions& options = {});

} // namespace testserver

#endif
