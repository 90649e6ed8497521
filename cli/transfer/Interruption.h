#ifndef SFTPCLIENT_CLI_TRANSFER_INTERRUPTION_H
#define SFTPCLIENT_CLI_TRANSFER_INTERRUPTION_H

#include <csignal>

#include <array>
#include <chrono>

/// Keeps SIGINT and SIGTERM from ending the process as long as this object lives, so that work can be put in order
/// first. The second of the same kind ends it all the same, in case something hangs. A signal that was ignored stays
/// ignored.
/// REQUIRES: one object at a time, and one thread.
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
    std::array<struct sigaction, 2> m_before = {};
};

/// "SIGINT" or "SIGTERM".
const char* nameOfSignal(int signal);

/// Ends the process by `signal`, so that its parent sees what happened: a shell stops its script.
[[noreturn]] void endBySignal(int signal);

#endif
