#ifndef SFTPCLIENT_SESSION_DIGEST_H
#define SFTPCLIENT_SESSION_DIGEST_H

#include <openssl/evp.h>

#include <memory>
#include <string>
#include <string_view>

namespace session {

/// The SHA-256 digest of several texts: identifies a login without keeping its password.
class Digest
{
public:
    Digest();

    /// Adds a text; "a" and "b" give another digest than "ab".
    void add(std::string_view text);
    std::string value();

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_context;
};

/// The fingerprint of an SSH host key as ssh-keygen prints it: "SHA256:" and base64 without padding.
std::string fingerprintOf(std::string_view key);

/// The same from a fingerprint that may lack "SHA256:" or have padding.
std::string withFingerprintName(const std::string& fingerprint);

} // namespace session

#endif
