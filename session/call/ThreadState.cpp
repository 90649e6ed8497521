#include "call/ThreadState.h"

#include <openssl/err.h>

#include <pthread.h>

#include <array>
#include <cerrno>
#include <ctime>

namespace session {

namespace {

// Of a connection that the server has closed, and of a file that would exceed the process's limit.
constexpr std::array<int, 2> kSignals = {SIGPIPE, SIGXFSZ};

sigset_t pendingSignals()
{
    sigset_t pending;
    sigpending(&pending);
    return pending;
}

sigset_t setOf(int signal)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    return signals;
}

} // namespace

ThreadState::ThreadState() : m_errno(errno), m_pending(pendingSignals())
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
    pthread_sigmask(SIG_SETMASK, nullptr, &m_mask);
    for (const int signal : kSignals) {
        const sigset_t alone = setOf(signal);
        pthread_sigmask(SIG_BLOCK, &alone, nullptr);
    }
}

ThreadState::~ThreadState()
{
    const sigset_t pending = pendingSignals();
    for (const int signal : kSignals) {
        if (sigismember(&m_pending, signal) == 0 && sigismember(&pending, signal) == 1) {
            const sigset_t alone = setOf(signal);
            const timespec now = {};
            sigtimedwait(&alone, nullptr, &now);
        }
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
