#include "request/Access.h"

#include "call/Failure.h"
#include "call/SetOption.h"
#include "request/Digest.h"
#include "request/HostKey.h"
#include "request/KnownHosts.h"

#include <ConfigReader.h>

#include <openssl/ssl.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>

namespace session {

namespace {

long inMilliseconds(std::chrono::milliseconds time) { return static_cast<long>(time.count()); }

long inSeconds(std::chrono::milliseconds time)
{
    return static_cast<long>(std::chrono::ceil<std::chrono::seconds>(time).count());
}

// To libcurl 0 means its own default.
constexpr std::chrono::seconds kForEver(std::numeric_limits<std::int32_t>::max() / 1000);

std::chrono::milliseconds orForEver(std::chrono::milliseconds limit) { return limit.count() == 0 ? kForEver : limit; }

// Whether libcurl has a directory of the machine's trust store.
bool hasTrustFolder() { return curl_version_info(CURLVERSION_NOW)->capath != nullptr; }

bool allowsNone() { return ConfigReader::getInt("General", "CertAuthSwitch", true) == 0; }

// What a transfer over SSH has on its way at once: an upload as much as its buffer holds, a download four times as
// much. With libcurl's own 64 and 16 KiB, a line with a round trip of 50 ms moves 1 MB/s. A larger one counts as moved
// only as a whole, and on a slow line would seem to stall.
constexpr long kBufferOverSsh = 524288;

// Where the rate is limited, half a second's worth, so that bytes do not come in bursts. An upload's are paced as they
// are read.
long receiveBufferOverSsh(std::uint64_t rate)
{
    constexpr long kLeast = 16384; // libcurl's
    return rate == 0 || rate / 2 > kBufferOverSsh ? kBufferOverSsh : std::max(static_cast<long>(rate / 2), kLeast);
}

std::string nameOf(Scheme scheme) { return scheme == Scheme::Ftp ? "ftp" : scheme == Scheme::Ftps ? "ftps" : "sftp"; }

} // namespace

Access::Access(const SFtpRequest& request, const SessionOptions& options, CertificateReader& certificates)
    : m_request(request), m_options(options), m_target(request)
{
    checkTexts(request);
    if (!m_target.isSsh()) {
        m_trustsAnybody = request.caCert == "none" && allowsNone();
        m_trust = m_trustsAnybody ? Trust() : certificates.trusted(request.caCert);
    }
    m_identity.server = m_target.server();
    // Options are per session, so they are the same for all of its connections.
    Digest digest;
    digest.add(m_identity.server);
    digest.add(request.userName);
    digest.add(request.password);
    digest.add(m_trust.pem);
    digest.add(m_trustsAnybody ? "none" : "");
    m_identity.digest = digest.value();
}

void Access::applyTo(CURL* handle, Call& call, bool newestTls)
{
    m_call = &call;
    set(handle, CURLOPT_PROTOCOLS_STR, nameOf(m_target.scheme()).c_str());
    set(handle, CURLOPT_PATH_AS_IS, 1L);
    set(handle, CURLOPT_USERNAME, m_request.userName.c_str());
    set(handle, CURLOPT_PASSWORD, m_request.password.c_str());
    // Even if empty: a proxy from the environment would get the login in the clear, and an exception there would leave
    // out the host's proxy.
    set(handle, CURLOPT_PROXY, m_options.proxy.c_str());
    set(handle, CURLOPT_NOPROXY, "");
    // Without a tunnel, an HTTP proxy would get the server's login in the clear.
    set(handle, CURLOPT_HTTPPROXYTUNNEL, 1L);
    // Its answers are none of the server's.
    set(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(handle, CURLOPT_FTP_SKIP_PASV_IP, 1L);
    set(handle, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_SINGLECWD));
    applyLimits(handle, call);
    if (m_target.isSsh()) {
        applySsh(handle);
    } else {
        applyTls(handle, newestTls);
    }
}

void Access::applyLimits(CURL* handle, const Call& call) const
{
    set(handle, CURLOPT_CONNECTTIMEOUT_MS, inMilliseconds(orForEver(m_options.connectTimeout)));
    // Longer than the call's own limit, which is exact and names itself.
    set(handle, CURLOPT_FTP_RESPONSE_TIMEOUT,
        std::min(inSeconds(orForEver(m_options.replyTimeout)) + 1, inSeconds(kForEver)));
    // The pool decides how long an idle connection is usable.
    set(handle, CURLOPT_MAXAGE_CONN, inSeconds(kForEver));
    if (const auto left = call.timeLeft()) {
        set(handle, CURLOPT_TIMEOUT_MS, inMilliseconds(*left));
    }
}

// With TLS 1.3, kept connections fail on servers that require the control connection's session on data connections, and
// libcurl 7.88.1 loses the ends of uploads. So 1.2, wherever there is a choice.
void Access::applyTls(CURL* handle, bool newestTls) const
{
    // libcurl's constant for a maximum version is that for the minimum, shifted by 16 bits.
    constexpr long kTls12Alone = static_cast<long>(CURL_SSLVERSION_TLSv1_2) * 0x10001;
    set(handle, CURLOPT_SSLVERSION,
        speaksNewestTls(newestTls) ? static_cast<long>(CURL_SSLVERSION_TLSv1_3) : kTls12Alone);
    set(handle, CURLOPT_USE_SSL, static_cast<long>(m_options.requireTls ? CURLUSESSL_ALL : CURLUSESSL_TRY));
    set(handle, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_TLS));
    set(handle, CURLOPT_SSL_VERIFYPEER, m_trustsAnybody ? 0L : 1L);
    set(handle, CURLOPT_SSL_VERIFYHOST, m_trustsAnybody || !m_options.compareHostName ? 0L : 2L);
    if (givesCertificates()) {
        // Only the given certificates are trusted, by each context that libcurl makes.
        set(handle, CURLOPT_CAINFO, static_cast<const char*>(nullptr));
        set(handle, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
        set(handle, CURLOPT_SSL_CTX_FUNCTION, secureContext);
        set(handle, CURLOPT_SSL_CTX_DATA, static_cast<const void*>(this));
    } else if (m_trust.certificates) {
        setBlob(handle, CURLOPT_CAINFO_BLOB, m_trust.pem);
        set(handle, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    } else if (hasTrustFolder()) {
        // Certificates in the directory are found by name; the bundle would be read as a whole each time.
        set(handle, CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    }
    if (!m_options.pinnedPublicKey.empty()) {
        set(handle, CURLOPT_PINNEDPUBLICKEY, m_options.pinnedPublicKey.c_str());
    }
    if (!m_options.clientCertificate.empty()) {
        setBlob(handle, CURLOPT_SSLCERT_BLOB, m_options.clientCertificate);
        setBlob(handle, CURLOPT_SSLKEY_BLOB, m_options.clientKey);
        // Without a passphrase, libcurl 7.88 would end the process when a key needs one.
        set(handle, CURLOPT_KEYPASSWD, "");
    }
}

// libcurl shows the context of a connection to an HTTPS proxy, too, which trusts the machine's store.
bool Access::givesCertificates() const
{
    constexpr char kOverTls[] = "https:";
    return m_trust.certificates && curl_strnequal(m_options.proxy.c_str(), kOverTls, sizeof kOverTls - 1) == 0;
}

CURLcode Access::secure(void* context) const noexcept
{
    return !givesCertificates() || trustIn(static_cast<SSL_CTX*>(context), m_trust) ? CURLE_OK : CURLE_OUT_OF_MEMORY;
}

// CURLOPT_SSL_CTX_FUNCTION
CURLcode Access::secureContext(CURL* /*handle*/, void* context, void* self) noexcept
{
    return static_cast<const Access*>(self)->secure(context);
}

bool Access::speaksNewestTls(bool newestTls) const
{
    return !m_target.isSsh() && (m_options.minimumTls == TlsVersion::Tls13 || newestTls);
}

void Access::applySsh(CURL* handle)
{
    set(handle, CURLOPT_UPLOAD_BUFFERSIZE, kBufferOverSsh);
    set(handle, CURLOPT_BUFFERSIZE, receiveBufferOverSsh(m_options.receiveRate));
    set(handle, CURLOPT_SSH_AUTH_TYPES, static_cast<long>(CURLSSH_AUTH_PASSWORD | CURLSSH_AUTH_KEYBOARD));
    if (!m_options.knownHostsFile.empty()) {
        set(handle, CURLOPT_SSH_KNOWNHOSTS, m_options.knownHostsFile.c_str());
        set(handle, CURLOPT_SSH_KEYFUNCTION, judgeKnownHost);
        set(handle, CURLOPT_SSH_KEYDATA, this);
    } else {
        set(handle, CURLOPT_SSH_HOSTKEYFUNCTION, judgeHostKey);
        set(handle, CURLOPT_SSH_HOSTKEYDATA, this);
    }
}

// Whether the key is taken; keeps why it is not.
bool Access::judge(curl_khmatch match, std::string_view key)
{
    const std::string fingerprint = fingerprintOf(key);
    switch (session::judgeHostKey(match, fingerprint, m_options.hostKeySha256)) {
    case HostKeyVerdict::Known:
        return true;
    case HostKeyVerdict::Changed:
        m_hostKeyRefusal = "the server's host key is " + fingerprint + ", another one than in knownHostsFile";
        return false;
    case HostKeyVerdict::Unexpected:
        m_hostKeyRefusal = "the server's host key is " + fingerprint + ", hostKeySha256 is another";
        return false;
    default:
        return judgeUnknown(fingerprint);
    }
}

// One that may be known as another is none to accept.
bool Access::judgeUnknown(const std::string& fingerprint)
{
    const std::string obstacle = obstacleIn(m_options.knownHostsFile);
    if (!obstacle.empty()) {
        m_hostKeyRefusal = "the server's host key, " + fingerprint + ", may be unknown or another: " + obstacle;
        return false;
    }
    if (!m_options.acceptUnknownHostKey) {
        m_hostKeyRefusal = "the server's host key is unknown: " + fingerprint +
                           "; where that is right, set hostKeySha256 to it, or add the host to knownHostsFile";
    }
    return m_options.acceptUnknownHostKey;
}

bool Access::takes(curl_khmatch match, std::string_view key) noexcept
try {
    return judge(match, key);
} catch (...) {
    m_call->keepException();
    return false;
}

int Access::judgeHostKey(void* self, int /*type*/, const char* key, size_t length) noexcept
{
    const bool isTaken = static_cast<Access*>(self)->takes(CURLKHMATCH_MISSING, {key, length});
    return isTaken ? CURLKHMATCH_OK : CURLKHMATCH_MISMATCH;
}

int Access::judgeKnownHost(CURL* /*handle*/, const curl_khkey* /*known*/, const curl_khkey* found, curl_khmatch match,
                           void* self) noexcept
{
    const bool isTaken = static_cast<Access*>(self)->takes(match, {found->key, found->len});
    return isTaken ? CURLKHSTAT_FINE : CURLKHSTAT_REJECT;
}

} // namespace session
