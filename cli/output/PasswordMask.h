#ifndef SFTPCLIENT_CLI_OUTPUT_PASSWORDMASK_H
#define SFTPCLIENT_CLI_OUTPUT_PASSWORDMASK_H

#include <string>

/// Hides a password in text that comes from elsewhere: a server may repeat it anywhere, in many a form.
///
/// Parse first, mask last: a password such as "220" would else change what a reply says.
class PasswordMask
{
public:
    /// The texts are copied, and wiped with this object.
    PasswordMask(const std::string& user, const std::string& password);
    ~PasswordMask();
    PasswordMask(const PasswordMask&) = delete;
    PasswordMask& operator=(const PasswordMask&) = delete;

    /// `text` with "****" (or "####" and the like, where the password has a "*") in place of the password: plain,
    /// percent-encoded, with backslashes before its bytes or \xNN in place of them, any mix of these, and as the base64
    /// of "user:password".
    std::string hiddenIn(std::string text) const;

private:
    std::string m_password;
    std::string m_base64;
    std::string m_mask;
};

#endif
