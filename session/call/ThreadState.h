#ifndef SFTPCLIENT_SESSION_THREADSTATE_H
#define SFTPCLIENT_SESSION_THREADSTATE_H

#include <csignal>
#include <string>
#include <vector>

namespace session {

/// Restores the calling thread's state: errno, OpenSSL's error queue, and the signal mask, in which SIGPIPE and
/// SIGXFSZ are blocked meanwhile. Those raised in between are discarded.
class ThreadState
{
public:
    ThreadState();
    ~ThreadState();
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;

private:
    struct OpenSslError
    {
        unsigned long code;
        std::string file;
        int line;
        std::string function;
        std::string data;
    };

    int m_errno;
    sigset_t m_pending;
    sigset_t m_mask = {};
    std::vector<OpenSslError> m_errors;
};

} // namespace session

#endif
