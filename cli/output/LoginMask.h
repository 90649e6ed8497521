#ifndef SFTPCLIENT_CLI_OUTPUT_LOGINMASK_H
#define SFTPCLIENT_CLI_OUTPUT_LOGINMASK_H

#include "output/PasswordMask.h"

#include <curl/curl.h>

#include <string>
#include <vector>

/// Hides a login in the lines of libcurl's trace.
class LoginMask
{
public:
    LoginMask(const std::string& user, const std::string& password);

    /// `line` with "****" in place of what belongs to the login: the argument of the commands USER, PASS and ACCT;
    /// what follows the name of a header that carries a login; the password in any form, anywhere but in a reply's
    /// code; and the user, as a word of its own, in what the server answers and libcurl notes.
    std::string masked(curl_infotype type, const std::string& line) const;

private:
    std::string m_user;
    PasswordMask m_password;
};

#endif
