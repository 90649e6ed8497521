#ifndef SFTPCLIENT_SESSION_HOSTKEY_H
#define SFTPCLIENT_SESSION_HOSTKEY_H

#include <curl/curl.h>
#include <openssl/evp.h>

#include <array>
#include <string>
#include <string_view>

namespace session {

constexpr char kFingerprintName[] = "SHA256:";

inline std::string base64Of(std::string_view bytes)
{
    // EVP_EncodeBlock ends the text with a zero byte.
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int written =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(written));
    return text;
}

/// A fingerprint that may lack "SHA256:" or have padding, as ssh-keygen prints it.
inline std::string withFingerprintName(const std::string& fingerprint)
{
    const std::string named =
        fingerprint.rfind(kFingerprintName, 0) == 0 ? fingerprint : kFingerprintName + fingerprint;
    return named.substr(0, named.find_last_not_of('=') + 1);
}

/// The fingerprint of an SSH host key as ssh-keygen prints it: "SHA256:" and base64 without padding.
inline std::string fingerprintOf(std::string_view key)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
    unsigned int size = 0;
    EVP_Digest(key.data(), key.size(), digest.data(), &size, EVP_sha256(), nullptr);
    return withFingerprintName(base64Of({reinterpret_cast<const char*>(digest.data()), size}));
}

enum class HostKeyVerdict
{
    Known,
    Unknown,
    Changed,    ///< the file of known hosts has another one for the server
    Unexpected, ///< it has another fingerprint than the one that is given
};

/// What becomes of an SSH server's key. `match`: of libcurl's search in the file of known hosts; missing without a
/// file. `expected`: the fingerprint that is given; may be empty.
inline HostKeyVerdict judgeHostKey(curl_khmatch match, const std::string& fingerprint, const std::string& expected)
{
    if (match == CURLKHMATCH_MISMATCH) {
        return HostKeyVerdict::Changed;
    }
    if (!expected.empty()) {
        return fingerprint == withFingerprintName(expected) ? HostKeyVerdict::Known : HostKeyVerdict::Unexpected;
    }
    return match == CURLKHMATCH_OK ? HostKeyVerdict::Known : HostKeyVerdict::Unknown;
}

} // namespace session

#endif
