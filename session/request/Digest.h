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

} // namespace session

#endif
