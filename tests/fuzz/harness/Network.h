#ifndef FUZZ_HARNESS_NETWORK_H
#define FUZZ_HARNESS_NETWORK_H

#include <cstdint>
#include <limits>
#include <map>

/// Nanoseconds since a network began.
using NetworkTime = std::int64_t;
constexpr NetworkTime kMillisecond = 1000000;
constexpr NetworkTime kNever = std::numeric_limits<NetworkTime>::max();

/// What a network's programs can connect to.
class Peer
{
public:
    virtual ~Peer() = default;
    /// Takes ownership of the server's end of a new connection to this port of 127.0.0.1. False, and nothing taken, if
    /// there is no such port.
    virtual bool accept(std::uint16_t port, int descriptor, NetworkTime now) = 0;
    /// Reads, sends and closes what is due.
    virtual void act(NetworkTime now) = 0;
    /// When it acts again if the program sends nothing.
    virtual NetworkTime nextAct() const = 0;
};

/// A network without a kernel's delays, ports and clock. While the object exists, each TCP socket that its thread opens
/// is one end of a pair, connects to the peer or to nothing, and the peer acts only while the thread waits in poll().
/// A wait for nothing ends at once: only the monotonic clock moves on. So a run takes no time but its own, and the same
/// run gives the same.
///
/// The program's own socket(), connect(), getpeername(), getsockname(), poll() and clock_gettime() do that: they
/// replace the C library's for libcurl, too.
class Network
{
public:
    explicit Network(Peer& peer);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    /// Lets so much time pass. Ends the program, as a finding, if the run has taken more than three hours by then.
    void pass(NetworkTime time);

    NetworkTime now() const { return m_now; }
    /// The same, with the time that it takes to look, so that no program that waits for the clock waits forever.
    NetworkTime lookAtClock() { return m_now += 1000; }

    // What the functions do:
    int openSocket(int flags);
    int connectTo(int descriptor, std::uint16_t port);
    /// The port of 127.0.0.1 that the socket is connected to; 0 if it is not one of this network.
    std::uint16_t portOf(int descriptor) const;
    int wait(struct pollfd* watched, unsigned long count, int milliseconds);

private:
    struct Socket
    {
        int serverEnd;
        std::uint16_t port;
    };

    Peer& m_peer;
    std::map<int, Socket> m_sockets;
    NetworkTime m_now = 0;
};

#endif
