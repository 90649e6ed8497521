#ifndef SFTPCLIENT_SESSION_THREADSTATE_H
#define SFTPCLIENT_SESSION_THREADSTATE_H

#include <csignal>
#include <string>
#include <vector>

namespace session {

/// Leaves the calling thread as it was: errno, OpenSSL's queue of errors, and the signal mask, in which SIGPIPE is
/// blocked meanwhile. A SIGPIPE that came from within is taken away.
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
    bool m_pipePending;
    sigset_t m_mask = {};
    std::vector<OpenSslError> m_errors;
};

} // namespace session

#endif
