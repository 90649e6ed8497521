#ifndef SFTPCLIENT_PLATFORM_SECURITYSS_H
#define SFTPCLIENT_PLATFORM_SECURITYSS_H

#include <string>

/// The security service's results.
enum SecuritySS_RC
{
    SECURITYSS_SUCCESS = 0, ///< done
    SECURITYSS_FAILURE = 3  ///< not done, or only partly: the handle must not be used
};

/// The host's security service. Called from every thread that uses the library.
class SecuritySS
{
public:
    /// Adds the host's own TLS settings to a libcurl easy handle (`CURL*`), which the library still owns. `cert` is the
    /// handle's certificate text, or "none"; the service may change it, and the library does not use it afterwards.
    /// Only `CurlSFtpResponse::SetCert` calls this; its caller gets the result, or the exception.
    static SecuritySS_RC enrichSSL(void* curl, std::string& cert);
};

#endif
