#include "transfer/Interruption.h"

#include <poll.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX's signal sets are not in <csignal>
#include <unistd.h>

#include <ctime>

namespace {

constexpr std::array<int, 2> kSignals{SIGINT, SIGTERM};

volatile std::sig_atomic_t received = 0;

void note(int signal) { received = signal; }

} // namespace

Interruption::Interruption()
{
    received = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        struct sigaction action = {};
        action.sa_handler = note;
        action.sa_flags = static_cast<int>(static_cast<unsigned>(SA_RESTART) | SA_RESETHAND);
        sigaction(kSignals[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN) {
            sigaction(kSignals[i], &action, nullptr);
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
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    for (const int signal : kSignals) {
        sigaddset(&blocked, signal);
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

const char* nameOfSignal(int signal) { return signal == SIGINT ? "SIGINT" : "SIGTERM"; }

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
