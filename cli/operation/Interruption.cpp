#include "operation/Interruption.h"

#include <poll.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX's signal sets are not in <csignal>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <ctime>

namespace {

struct Name
{
    int signal;
    const char* text;
};

constexpr std::array<Name, 4> kSignals{
    {{SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}, {SIGPIPE, "SIGPIPE"}}};

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
        const int signal = kSignals[i].signal;
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
        sigaction(kSignals[i].signal, &m_before[i], nullptr);
    }
}

int Interruption::signal() { return received; }

void Interruption::wait(std::chrono::milliseconds time)
{
    // Blocked between the look and the wait, or a signal that comes right there would not end the wait.
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    for (const Name& each : kSignals) {
        sigaddset(&blocked, each.signal);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    if (received == 0) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        const std::chrono::nanoseconds rest = time - seconds;
        const timespec limit{seconds.count(), rest.count()};
        ppoll(nullptr, 0, &limit, &before);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

CancelledBySignal::CancelledBySignal(SFtpSession& session)
{
    cancelled = &session;
    if (received != 0) {
        session.Cancel();
    }
}

CancelledBySignal::~CancelledBySignal() { cancelled = nullptr; }

const char* nameOfSignal(int signal)
{
    const auto* const found =
        std::find_if(kSignals.begin(), kSignals.end(), [signal](const Name& each) { return each.signal == signal; });
    return found == kSignals.end() ? "a signal" : found->text;
}

void endBySignal(int signal)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, signal);
    pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
    static_cast<void>(raise(signal));
    _exit(128 + signal);
}
