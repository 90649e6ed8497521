#ifndef SFTPCLIENT_SESSION_ACCESS_H
#define SFTPCLIENT_SESSION_ACCESS_H

#include "call/Call.h"
#include "request/Certificates.h"
#include "request/Target.h"

#include <SFtpRequest.h>
#include <SFtpSession.h>

#include <curl/curl.h>

#include <string>
#include <string_view>

namespace session {

/// What a connection leads to and on whose behalf. Connections with the same identity are interchangeable.
struct Identity
{
    std::string server; ///< scheme, host and port
    std::string digest; ///< of these and of login, trust and options
};

/// How one request reaches its server: the options that a connection to it needs.
class Access
{
public:
    /// Throws `Failure` for an invalid request, before anything is sent.
    /// REQUIRES: request and options outlive this object.
    Access(const SFtpRequest& request, const SessionOptions& options, CertificateReader& certificates);

    const SFtpRequest& request() const { return m_request; }
    const SessionOptions& options() const { return m_options; }
    const Target& target() const { return m_target; }
    const Identity& identity() const { return m_identity; }

    /// Sets up a new handle for this server and login. What it refers to lives as long as this object.
    void applyTo(CURL* handle, Call& call, bool newestTls);

    /// Whether TLS 1.3 is used; `newestTls`: the server supports nothing else.
    bool speaksNewestTls(bool newestTls) const;

    /// Gives a TLS context the certificates that the request trusts; the machine's trust store is libcurl's to give.
    CURLcode secure(void* context) const noexcept;

    /// Why the SSH server's key was refused; empty if it was not.
    const std::string& hostKeyRefusal() const { return m_hostKeyRefusal; }

private:
    void applyLimits(CURL* handle, const Call& call) const;
    void applyTls(CURL* handle, bool newestTls) const;
    void applySsh(CURL* handle);

    bool givesCertificates() const;

    static CURLcode secureContext(CURL* handle, void* context, void* self) noexcept;
    static int judgeHostKey(void* self, int type, const char* key, size_t length) noexcept;
    static int judgeKnownHost(CURL* handle, const curl_khkey* known, const curl_khkey* found, curl_khmatch match,
                              void* self) noexcept;
    bool judge(curl_khmatch match, std::string_view key);
    bool judgeUnknown(const std::string& fingerprint);
    bool takes(curl_khmatch match, std::string_view key) noexcept;

    const SFtpRequest& m_request;
    const SessionOptions& m_options;
    Target m_target;
    bool m_trustsAnybody = false; ///< "none", and the host's configuration allows it
    Trust m_trust;
    Identity m_identity;
    std::string m_hostKeyRefusal;
    Call* m_call = nullptr; // of the transfer being set up
};

} // namespace session

#endif
