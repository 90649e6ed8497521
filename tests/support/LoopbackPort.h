#ifndef SUPPORT_LOOPBACKPORT_H
#define SUPPORT_LOOPBACKPORT_H

#include <sys/socket.h>

#include <cstdint>
#include <string>

/// A port of 127.0.0.1 that the system chooses and nobody else gets as long as this object lives. It refuses
/// connections until it listens.
class LoopbackPort
{
public:
    /// Throws `std::system_error`.
    LoopbackPort();
    ~LoopbackPort();
    LoopbackPort(const LoopbackPort&) = delete;
    LoopbackPort& operator=(const LoopbackPort&) = delete;

    std::uint16_t number() const { return m_number; }

    /// "127.0.0.1:PORT".
    std::string address() const { return "127.0.0.1:" + std::to_string(m_number); }

    /// `waiting`: how many connections may wait to be accepted.
    void listen(int waiting = SOMAXCONN) const;

    /// Waits for the next connection, which the caller closes; negative if `stop` has been called.
    int accept() const;

    /// For a program that listens there in place of this one.
    int socket() const { return m_socket; }

    /// Whether a connection waits for `accept`.
    bool wasReached() const;

    /// Stops listening, and ends an `accept` that waits.
    void stop() const;

private:
    bool isReady(int milliseconds) const;

    int m_socket;
    std::uint16_t m_number = 0;
};

#endif
