#include "call/ThreadState.h"

#include <openssl/err.h>

#include <pthread.h>

#include <cerrno>
#include <ctime>

namespace session {

namespace {

bool pipeIsPending()
{
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

sigset_t pipeAlone()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return signals;
}

} // namespace

ThreadState::ThreadState() : m_errno(errno), m_pipePending(pipeIsPending())
{
    const char* file = nullptr;
    int line = 0;
    const char* function = nullptr;
    const char* data = nullptr;
    int flags = 0;
    while (const unsigned long code = ERR_get_error_all(&file, &line, &function, &data, &flags)) {
        const bool isText = (static_cast<unsigned>(flags) & ERR_TXT_STRING) != 0 && data != nullptr;
        // Copies, because the queue frees its own.
        m_errors.push_back({code, file, line, function, isText ? data : ""});
    }
    const sigset_t pipe = pipeAlone();
    pthread_sigmask(SIG_BLOCK, &pipe, &m_mask);
}

ThreadState::~ThreadState()
{
    if (!m_pipePending && pipeIsPending()) {
        const sigset_t pipe = pipeAlone();
        const timespec now = {};
        sigtimedwait(&pipe, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    ERR_clear_error();
    for (const OpenSslError& each : m_errors) {
        ERR_new();
        ERR_set_debug(each.file.c_str(), each.line, each.function.c_str());
        ERR_set_error(ERR_GET_LIB(each.code), ERR_GET_REASON(each.code), each.data.empty() ? nullptr : "%s",
                      each.data.c_str());
    }
    errno = m_errno;
}

} // namespace session
