#include "operation/Interruption.h"

#include "base/Signals.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ctime>

namespace {

constexpr std::array<int, 4> kSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

volatile std::sig_atomic_t received = 0;

std::atomic<SFtpSession*> cancelled{nullptr};

void note(int signal)
{
    received = signal;
    if (SFtpSession* const session = cancelled.load()) {
        session->Cancel();
    }
}

} // namespace

Interruption::Interruption()
{
    received = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        struct sigaction action = {};
        action.sa_handler = note;
        const int signal = kSignals[i];
        action.sa_flags = static_cast<int>(SA_RESTART | (signal == SIGPIPE ? 0U : SA_RESETHAND));
        sigaction(signal, nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &m_before[i], nullptr);
    }
}

int Interruption::signal() { return received; }

void Interruption::wait(std::chrono::milliseconds time)
{
    // Blocked between the look and the wait, or a signal that comes right there would not end the wait.
    const SignalsBlocked blocked(signalSet({kSignals.begin(), kSignals.end()}));
    if (received == 0) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        const std::chrono::nanoseconds rest = time - seconds;
        const timespec limit{seconds.count(), rest.count()};
        ppoll(nullptr, 0, &limit, &blocked.before());
    }
}

CancelledBySignal::CancelledBySignal(SFtpSession& session)
{
    cancelled = &session;
    if (received != 0) {
        session.Cancel();
    }
}

CancelledBySignal::~CancelledBySignal() { cancelled = nullptr; }

std::string nameOfSignal(int signal) { return std::string("SIG") + sigabbrev_np(signal); }

void endBySignal(int signal)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    const sigset_t mask = signalSet({signal});
    pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
    static_cast<void>(raise(signal));
    _exit(128 + signal);
}
