#ifndef SFTPCLIENT_TRANSFER_USERPWD_H
#define SFTPCLIENT_TRANSFER_USERPWD_H

#include "transfer/WipeString.h"

#include <SFtpRequest.h>

#include <string>

/// The credentials of one call as libcurl takes them, "user:password": the only copy of the password that the library
/// makes. It is wiped where an operation says so, and by the destructor when an exception passes.
class UserPwd
{
public:
    explicit UserPwd(const SFtpRequest& request)
    {
        // Room for all of it first: a text that grew would leave the password behind in the block it outgrew.
        m_text.reserve(request.userName.size() + 1 + request.password.size());
        m_text.append(request.userName).append(1, ':').append(request.password);
    }
    ~UserPwd() { wipe(); }
    UserPwd(const UserPwd&) = delete;
    UserPwd& operator=(const UserPwd&) = delete;

    const char* c_str() const { return m_text.c_str(); }
    bool empty() const { return m_text.empty(); }

    void wipe()
    {
        if (!m_text.empty()) {
            sftpWipeString(m_text);
        }
    }

private:
    std::string m_text;
};

#endif
