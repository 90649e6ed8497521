#ifndef SFTPCLIENT_SESSION_ACCESS_H
#define SFTPCLIENT_SESSION_ACCESS_H

#include "call/Call.h"
#include "request/Target.h"

#include <SFtpRequest.h>
#include <SFtpSession.h>

#include <curl/curl.h>

#include <string>

namespace session {

/// Whom a connection is to, and for whom: connections of one identity serve each other's requests.
struct Identity
{
    std::string server; ///< scheme, host and port
    std::string digest; ///< of these and of login, trust and options
};

/// How one request reaches its server: what a connection to it needs to be told.
class Access
{
public:
    /// Throws `Failure` where the request cannot be carried out: nothing has been sent then.
    /// REQUIRES: both outlive this object.
    Access(const SFtpRequest& request, const SessionOptions& options);

    const SFtpRequest& request() const { return m_request; }
    const SessionOptions& options() const { return m_options; }
    const Target& target() const { return m_target; }
    const Identity& identity() const { return m_identity; }

    /// Sets a new handle up for this server and login. What libcurl is handed lives as long as this object.
    void applyTo(CURL* handle, Call& call, bool newestTls);

    /// Whether TLS 1.3 is spoken, with a server that has nothing else (`newestTls`) or any other.
    bool speaksNewestTls(bool newestTls) const;

    /// Why the SSH server's key was refused; empty where it was not.
    const std::string& hostKeyRefusal() const { return m_hostKeyRefusal; }

private:
    void applyLimits(CURL* handle, const Call& call) const;
    void applyTls(CURL* handle, bool newestTls) const;
    void applySsh(CURL* handle);

    static int judgeHostKey(void* self, int type, const char* key, size_t length) noexcept;
    static int judgeKnownHost(CURL* handle, const curl_khkey* known, const curl_khkey* found, curl_khmatch match,
                              void* self) noexcept;
    int judgeUnknown(const std::string& fingerprint);

    const SFtpRequest& m_request;
    const SessionOptions& m_options;
    Target m_target;
    bool m_trustsAnybody = false; ///< "none", and the host's configuration allows it
    std::string m_ca;             ///< PEM; empty: the machine's trust store
    Identity m_identity;
    std::string m_hostKeyRefusal;
    Call* m_call = nullptr; // of the transfer that is set up
};

} // namespace session

#endif
