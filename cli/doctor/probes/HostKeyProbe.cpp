#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>
#include <request/HostKey.h>

#include <exception>
#include <string_view>

namespace doctor {

namespace {

// "ssh-ed25519", with which the key begins, behind its length in four bytes.
std::string_view typeOf(std::string_view key)
{
    constexpr std::size_t kLength = 4;
    std::size_t size = 0;
    for (const char byte : key.substr(0, kLength)) {
        size = size << 8U | static_cast<unsigned char>(byte);
    }
    return key.substr(kLength, size);
}

/// A look at the server's key, as a session looks at it. Once it is known, there is nothing more to ask: refusing it
/// ends the connection before a login.
class Look
{
public:
    Look(const Access& access, HostKey& hostKey) : m_access(access), m_hostKey(hostKey) {}

    /// Compared with this file of known hosts, by which libcurl also chooses the type of key that it asks for.
    ProbeResult comparing(const std::string& knownHostsFile)
    {
        ControlConnection connection(m_access, Manner::Client);
        curl_easy_setopt(connection.handle(), CURLOPT_SSH_KNOWNHOSTS, knownHostsFile.c_str());
        curl_easy_setopt(connection.handle(), CURLOPT_SSH_KEYFUNCTION, compared);
        curl_easy_setopt(connection.handle(), CURLOPT_SSH_KEYDATA, this);
        return connection.run({m_access.request.remotePath, Transfer::What::Nothing});
    }
    /// Compared with nothing.
    void alone()
    {
        ControlConnection connection(m_access, Manner::Client);
        curl_easy_setopt(connection.handle(), CURLOPT_SSH_HOSTKEYFUNCTION, seen);
        curl_easy_setopt(connection.handle(), CURLOPT_SSH_HOSTKEYDATA, this);
        connection.run({m_access.request.remotePath, Transfer::What::Nothing});
    }

private:
    static int compared(CURL* /*handle*/, const curl_khkey* /*known*/, const curl_khkey* found, curl_khmatch match,
                        void* self) noexcept
    {
        static_cast<Look*>(self)->learn({found->key, found->len}, match);
        return CURLKHSTAT_REJECT;
    }
    static int seen(void* self, int /*type*/, const char* key, size_t length) noexcept
    {
        static_cast<Look*>(self)->learn({key, length}, CURLKHMATCH_MISSING);
        return CURLKHMATCH_MISMATCH;
    }

    void learn(std::string_view key, curl_khmatch match) noexcept
    try {
        m_hostKey.type = typeOf(key);
        m_hostKey.fingerprint = session::fingerprintOf(key);
        m_hostKey.line = m_access.knownHostsName() + " " + m_hostKey.type + " " + session::base64Of(key);
        m_hostKey.match = match;
    } catch (const std::exception&) {
        m_hostKey = {};
    }

    const Access& m_access;
    HostKey& m_hostKey;
};

} // namespace

void probeHostKey(const Access& access, Report& report)
{
    if (access.scheme != Scheme::Sftp || report.contact.greeting.ending != Ending::Complete) {
        return;
    }
    HostKey& hostKey = report.hostKey;
    const std::string& file = report.knownHostsFile;
    Look look(access, hostKey);
    if (!file.empty()) {
        look.comparing(file);
    }
    if (!hostKey.fingerprint.empty()) {
        return;
    }
    look.alone();
    if (file.empty() || hostKey.fingerprint.empty()) {
        return;
    }
    // Only a comparison that fails twice fails because of the file: any connection can be lost.
    const ProbeResult compared = look.comparing(file);
    if (compared.code != CURLE_PEER_FAILED_VERIFICATION) {
        hostKey.notCompared = compared.code;
        hostKey.error = compared.error;
    }
}

} // namespace doctor
