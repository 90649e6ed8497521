#ifndef SFTPCLIENT_PLATFORM_SECURITYSS_H
#define SFTPCLIENT_PLATFORM_SECURITYSS_H

#include <string>

/// The security service's answers.
enum SecuritySS_RC
{
    SECURITYSS_SUCCESS = 0, ///< done
    SECURITYSS_FAILURE = 3  ///< not done, or only in part: the handle must not be used
};

/// The host's security service. Called from every thread that uses the library.
class SecuritySS
{
public:
    /// Adds the host's own TLS settings to a libcurl easy handle (`CURL*`), which stays the library's.
    /// `cert` is the certificate text that belongs to the handle, or "none"; the service may change it, and the library
    /// does nothing more with it. Called by `CurlSFtpResponse::SetCert` alone, to whose caller the answer goes, and
    /// whatever is thrown.
    static SecuritySS_RC enrichSSL(void* curl, std::string& cert);
};

#endif
