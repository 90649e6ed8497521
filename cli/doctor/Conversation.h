#ifndef SFTPCLIENT_CLI_DOCTOR_CONVERSATION_H
#define SFTPCLIENT_CLI_DOCTOR_CONVERSATION_H

#include "doctor/Access.h"
#include "doctor/Deadline.h"
#include "doctor/OpenSslObjects.h"
#include "doctor/Report.h"

#include <curl/curl.h>

#include <memory>
#include <string>

namespace doctor {

/// A control connection that libcurl opens and then leaves alone: for what must be asked before a login, step by step.
/// No password ever goes over it. Each step ends within the limit.
class Conversation
{
public:
    /// Connects, and says how that ended in `code`. REQUIRES: `access` outlives this object.
    explicit Conversation(const Access& access);
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// libcurl's code for finding the name and connecting.
    int code() const { return m_code; }
    /// The address that answered, or that was tried last; empty where the name was not found.
    std::string address() const;

    /// Waits for a reply; for SSH, whose greeting has no code, for a line.
    Reply hear();
    /// Sends a command and waits for its reply.
    Reply ask(const std::string& command);

    /// Begins TLS; from then on everything goes over it. The certificate is not verified: nothing secret follows.
    Ending startTls(SSL_CTX* context);
    /// The TLS connection; null before `startTls` has succeeded.
    SSL* tls() const { return m_encrypted ? m_tls.get() : nullptr; }
    /// Why TLS could not begin.
    const std::string& failure() const { return m_failure; }

private:
    enum class Step
    {
        Done,
        Late,
        Failed
    };

    Step wait(const Deadline& deadline, int tlsResult) const;
    Step read(const Deadline& deadline, char& byte);
    Step write(const std::string& bytes);
    Ending readLine(const Deadline& deadline, std::string& line);

    const Access& m_access;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_handle;
    int m_code = CURLE_FAILED_INIT;
    int m_socket = -1;
    TlsSession m_tls;
    bool m_encrypted = false;
    std::string m_failure;
};

} // namespace doctor

#endif
