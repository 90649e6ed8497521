#include "WithoutWriteSignals.h"

#include <pthread.h>

#include <cerrno>
#include <ctime>
#include <initializer_list>

namespace {

sigset_t setOf(std::initializer_list<int> signals)
{
    sigset_t set = {};
    sigemptyset(&set);
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
    return set;
}

} // namespace

WithoutWriteSignals::WithoutWriteSignals()
{
    const sigset_t signals = setOf({SIGPIPE, SIGXFSZ});
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
}

WithoutWriteSignals::~WithoutWriteSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

// One that waits because the host itself blocks the signal is the host's.
void WithoutWriteSignals::discard(int error) const
{
    if (error != EPIPE && error != EFBIG) {
        return;
    }
    const int signal = error == EPIPE ? SIGPIPE : SIGXFSZ;
    const sigset_t signals = setOf({signal});
    const timespec atOnce = {};
    while (sigismember(&m_before, signal) == 0 && sigtimedwait(&signals, nullptr, &atOnce) < 0 && errno == EINTR) {
    }
}
