#include "base/Signals.h"

#include "base/ThrowErrno.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

// What is ignored, as under nohup, stays so; held back, it would come all the same.
sigset_t withoutIgnored(const std::vector<int>& signals)
{
    sigset_t set = signalSet(signals);
    for (const int signal : signals) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) {
            sigdelset(&set, signal);
        }
    }
    return set;
}

} // namespace

sigset_t signalSet(const std::vector<int>& signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
    return set;
}

SignalsHeld::SignalsHeld(const std::vector<int>& signals)
    : m_signals(withoutIgnored(signals)), m_blocked(m_signals),
      m_descriptor(signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK))
{
    if (!m_descriptor.isOpen()) {
        throwErrno("signals cannot be waited for");
    }
}

int SignalsHeld::take() const
{
    signalfd_siginfo came = {};
    return read(descriptor(), &came, sizeof came) == sizeof came ? static_cast<int>(came.ssi_signo) : 0;
}
