#ifndef SFTPCLIENT_CLI_OUTPUT_LOGINMASK_H
#define SFTPCLIENT_CLI_OUTPUT_LOGINMASK_H

#include <curl/curl.h>

#include <string>
#include <vector>

/// Hides a login in the lines of libcurl's trace.
class LoginMask
{
public:
    /// The texts are copied, and wiped with this object.
    LoginMask(const std::string& user, const std::string& password);
    ~LoginMask();
    LoginMask(const LoginMask&) = delete;
    LoginMask& operator=(const LoginMask&) = delete;

    /// `line` with "****" in place of what belongs to the login: the argument of the commands USER, PASS and ACCT;
    /// what follows the name of a header that carries a login; the password, plain or percent-encoded, anywhere; and
    /// the user, as a word of its own, in what the server answers and libcurl notes.
    std::string masked(curl_infotype type, const std::string& line) const;

private:
    std::string m_user;
    std::string m_password;
    std::string m_encodedPassword;
};

#endif
