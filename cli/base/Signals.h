#ifndef SFTPCLIENT_CLI_BASE_SIGNALS_H
#define SFTPCLIENT_CLI_BASE_SIGNALS_H

#include "base/Descriptor.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX's signal sets are not in <csignal>

#include <vector>

sigset_t signalSet(const std::vector<int>& signals);

/// Blocks signals, for the calling thread and those that it makes, as long as this object lives.
class SignalsBlocked
{
public:
    explicit SignalsBlocked(const sigset_t& signals) { pthread_sigmask(SIG_BLOCK, &signals, &m_before); }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

    const sigset_t& before() const { return m_before; }

private:
    sigset_t m_before = {};
};

/// Holds signals back as long as this object lives, but for those that are ignored, and tells of them. What is not
/// taken takes effect afterwards. REQUIRES: one thread alone.
class SignalsHeld
{
public:
    /// Throws `std::system_error`.
    explicit SignalsHeld(const std::vector<int>& signals);

    /// Can be read once a signal has come.
    int descriptor() const { return m_descriptor.get(); }

    /// The signal that came, or 0.
    int take() const;

private:
    const sigset_t m_signals;
    const SignalsBlocked m_blocked;
    const Descriptor m_descriptor;
};

#endif
