// The program's own connect(), which replaces the C library's for libcurl too.
#include "harness/OwnPorts.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace {

// connect() has no argument that could carry them.
std::atomic<std::uint16_t> controlPort{0};
std::atomic<std::uint16_t> dataPort{0};
std::atomic<unsigned> connections{0};

// 0 as soon as a pending connection is established, otherwise the error that ended it.
int outcomeOf(int descriptor)
{
    pollfd watched = {descriptor, POLLOUT, 0};
    while (poll(&watched, 1, -1) < 0) {
    }
    int error = 0;
    socklen_t length = sizeof error;
    getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

} // namespace

void allowPortsOnly(std::uint16_t control, std::uint16_t data)
{
    controlPort = control;
    dataPort = data;
}

unsigned ownConnections() { return connections; }

extern "C" __attribute__((visibility("default"))) int connect(int descriptor, const sockaddr* address, socklen_t length)
{
    sockaddr_in peer = {};
    if (address != nullptr && address->sa_family == AF_INET && length >= sizeof peer) {
        std::memcpy(&peer, address, sizeof peer);
    }
    const std::uint16_t port = ntohs(peer.sin_port);
    const bool own = peer.sin_addr.s_addr == htonl(INADDR_LOOPBACK) && (port == controlPort || port == dataPort);
    if (!own || port == 0) {
        errno = ECONNREFUSED;
        return -1;
    }
    // A client may close while it is still connecting, and the other end would never accept it: so the
    // connection is established, and counted, before the client continues.
    const int begun = static_cast<int>(syscall(SYS_connect, descriptor, address, length));
    if (begun != 0) {
        const int error = errno == EINPROGRESS ? outcomeOf(descriptor) : errno;
        if (error != 0) {
            errno = error;
            return -1;
        }
        errno = EINPROGRESS;
    }
    ++connections;
    return begun;
}
