#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>
#include <openssl/evp.h>

#include <array>
#include <exception>

namespace doctor {

namespace {

std::string nameOf(int type)
{
    switch (type) {
    case CURLKHTYPE_RSA:
        return "RSA";
    case CURLKHTYPE_DSS:
        return "DSA";
    case CURLKHTYPE_ECDSA:
        return "ECDSA";
    case CURLKHTYPE_ED25519:
        return "ED25519";
    default:
        return "of an unknown type";
    }
}

// As ssh-keygen writes it: base64 without the padding.
std::string fingerprintOf(const char* key, std::size_t length)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
    unsigned int size = 0;
    EVP_Digest(key, length, digest.data(), &size, EVP_sha256(), nullptr);
    std::array<unsigned char, 4 * (EVP_MAX_MD_SIZE / 3 + 1) + 1> text = {};
    const int written = EVP_EncodeBlock(text.data(), digest.data(), static_cast<int>(size));
    std::string base64(reinterpret_cast<const char*>(text.data()), static_cast<std::size_t>(written));
    base64.erase(base64.find_last_not_of('=') + 1);
    return "SHA256:" + base64;
}

// Once the key is known, there is nothing more to ask: refusing it ends the connection before a login.
int learn(void* hostKey, int type, const char* key, size_t length) noexcept
try {
    *static_cast<HostKey*>(hostKey) = {nameOf(type), fingerprintOf(key, length)};
    return CURLKHMATCH_MISMATCH;
} catch (const std::exception&) {
    return CURLKHMATCH_MISMATCH;
}

} // namespace

void probeHostKey(const Access& access, Report& report)
{
    if (access.scheme != Scheme::Sftp || report.contact.greeting.ending != Ending::Complete) {
        return;
    }
    ControlConnection connection(access, Manner::Client);
    curl_easy_setopt(connection.handle(), CURLOPT_SSH_HOSTKEYFUNCTION, learn);
    curl_easy_setopt(connection.handle(), CURLOPT_SSH_HOSTKEYDATA, &report.hostKey);
    connection.run({access.request.remotePath, Transfer::What::Nothing});
}

} // namespace doctor
