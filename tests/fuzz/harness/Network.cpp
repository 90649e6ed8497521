#include "harness/Network.h"

#include "harness/Require.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>

namespace {

constexpr NetworkTime kLongestRun = 3LL * 3600 * 1000 * kMillisecond;
constexpr std::uint16_t kClientPort = 40000;

thread_local Network* current = nullptr;

int kernelPoll(pollfd* watched, nfds_t count, const timespec* time)
{
    // The kernel writes the time that is left into it.
    timespec left = time == nullptr ? timespec{} : *time;
    return static_cast<int>(syscall(SYS_ppoll, watched, count, time == nullptr ? nullptr : &left, nullptr, 0));
}

int giveAddress(std::uint16_t port, sockaddr* address, socklen_t* length)
{
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    own.sin_port = htons(port);
    std::memcpy(address, &own, std::min<std::size_t>(*length, sizeof own));
    *length = sizeof own;
    return 0;
}

} // namespace

Network::Network(Peer& peer) : m_peer(peer)
{
    require(current == nullptr, "a thread has one network at a time");
    current = this;
}

Network::~Network()
{
    current = nullptr;
    for (const auto& each : m_sockets) {
        if (each.second.serverEnd >= 0) {
            close(each.second.serverEnd);
        }
    }
}

void Network::pass(NetworkTime time)
{
    const NetworkTime until = m_now + time;
    for (m_peer.act(m_now); m_peer.nextAct() <= until; m_peer.act(m_now)) {
        m_now = std::max(m_now, m_peer.nextAct());
    }
    m_now = until;
    require(m_now < kLongestRun, "a call ends");
}

int Network::openSocket(int flags)
{
    std::array<int, 2> ends = {};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0, ends.data()) != 0) {
        return -1;
    }
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const auto known = m_sockets.find(ends[0]);
    if (known != m_sockets.end() && known->second.serverEnd >= 0) { // closed without being connected
        close(known->second.serverEnd);
    }
    m_sockets[ends[0]] = {ends[1], 0};
    return ends[0];
}

int Network::connectTo(int descriptor, std::uint16_t port)
{
    const auto socket = m_sockets.find(descriptor);
    if (port == 0 || socket == m_sockets.end() || socket->second.serverEnd < 0 ||
        !m_peer.accept(port, socket->second.serverEnd, m_now)) {
        errno = ECONNREFUSED;
        return -1;
    }
    socket->second = {-1, port};
    return 0;
}

std::uint16_t Network::portOf(int descriptor) const
{
    const auto socket = m_sockets.find(descriptor);
    return socket == m_sockets.end() ? 0 : socket->second.port;
}

int Network::wait(pollfd* watched, unsigned long count, int milliseconds)
{
    const NetworkTime until = milliseconds < 0 ? kNever : m_now + milliseconds * kMillisecond;
    for (;;) {
        pass(0);
        const timespec none = {};
        const int ready = kernelPoll(watched, count, &none);
        if (ready != 0 || milliseconds == 0) {
            return ready;
        }
        const NetworkTime next = m_peer.nextAct();
        require(next != kNever || until != kNever, "a wait ends");
        if (next > until) {
            pass(until - m_now);
            return 0;
        }
        pass(std::max<NetworkTime>(next - m_now, 0));
    }
}

// What replaces the C library's functions is visible to libcurl.
#pragma GCC visibility push(default)
extern "C" {

int socket(int domain, int type, int protocol)
{
    constexpr int kFlags = SOCK_CLOEXEC | SOCK_NONBLOCK;
    if (current != nullptr && (domain == AF_INET || domain == AF_INET6) && (type & ~kFlags) == SOCK_STREAM) {
        return current->openSocket(type & kFlags);
    }
    return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

int connect(int descriptor, const sockaddr* address, socklen_t length)
{
    if (current == nullptr) {
        return static_cast<int>(syscall(SYS_connect, descriptor, address, length));
    }
    sockaddr_in peer = {};
    if (address->sa_family == AF_INET && length >= sizeof peer) {
        std::memcpy(&peer, address, sizeof peer);
    }
    const bool isOwn = peer.sin_addr.s_addr == htonl(INADDR_LOOPBACK);
    return current->connectTo(descriptor, isOwn ? ntohs(peer.sin_port) : 0);
}

int getpeername(int descriptor, sockaddr* address, socklen_t* length)
{
    const std::uint16_t port = current == nullptr ? 0 : current->portOf(descriptor);
    return port != 0 ? giveAddress(port, address, length)
                     : static_cast<int>(syscall(SYS_getpeername, descriptor, address, length));
}

int getsockname(int descriptor, sockaddr* address, socklen_t* length)
{
    const std::uint16_t port = current == nullptr ? 0 : current->portOf(descriptor);
    return port != 0 ? giveAddress(kClientPort, address, length)
                     : static_cast<int>(syscall(SYS_getsockname, descriptor, address, length));
}

int poll(pollfd* watched, nfds_t count, int milliseconds)
{
    if (current != nullptr) {
        return current->wait(watched, count, milliseconds);
    }
    const timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    return kernelPoll(watched, count, milliseconds < 0 ? nullptr : &time);
}

int clock_gettime(clockid_t clock, timespec* time)
{
    if (current == nullptr || clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    constexpr NetworkTime kSecond = 1000 * kMillisecond;
    constexpr NetworkTime kBegin = 1000 * kSecond; // some programs take 0 for "never"
    const NetworkTime now = kBegin + current->lookAtClock();
    *time = {now / kSecond, now % kSecond};
    return 0;
}
}
#pragma GCC visibility pop
