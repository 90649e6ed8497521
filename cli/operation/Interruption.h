#ifndef SFTPCLIENT_CLI_OPERATION_INTERRUPTION_H
#define SFTPCLIENT_CLI_OPERATION_INTERRUPTION_H

#include <SFtpSession.h>

#include <csignal>

#include <array>
#include <chrono>
#include <string>

/// Keeps SIGINT, SIGTERM, SIGHUP and SIGPIPE from ending the process as long as this object lives, so that work can be
/// put in order first. The second of the same kind ends it all the same, in case something hangs, but for SIGPIPE, of
/// which each line that nobody reads brings another. A signal that was ignored stays ignored. REQUIRES: one object at a
/// time, and one thread.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// The number of the last signal that came, or 0.
    static int signal();

    /// Waits so long, or until a signal comes.
    static void wait(std::chrono::milliseconds time);

private:
    std::array<struct sigaction, 4> m_before = {};
};

/// Lets each of those signals cancel the session's calls as long as this object lives; at once where one has come.
/// REQUIRES: an `Interruption`; one object at a time.
class CancelledBySignal
{
public:
    explicit CancelledBySignal(SFtpSession& session);
    ~CancelledBySignal();
    CancelledBySignal(const CancelledBySignal&) = delete;
    CancelledBySignal& operator=(const CancelledBySignal&) = delete;
};

/// "SIGINT".
std::string nameOfSignal(int signal);

/// Ends the process by `signal`, so that its parent sees what happened: a shell stops its script.
[[noreturn]] void endBySignal(int signal);

#endif
