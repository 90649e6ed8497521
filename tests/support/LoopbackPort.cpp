#include "support/LoopbackPort.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

void check(int result)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), "no port of 127.0.0.1 can be had");
    }
}

} // namespace

LoopbackPort::LoopbackPort() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    check(bind(m_socket, generic, length));
    check(getsockname(m_socket, generic, &length));
    m_number = ntohs(address.sin_port);
}

LoopbackPort::~LoopbackPort() { close(m_socket); }

void LoopbackPort::listen(int waiting) const { check(::listen(m_socket, waiting)); }

// An accept() that waits has already reserved a descriptor, which would spoil a count of descriptors:
// so poll() waits. An alarm may interrupt that.
int LoopbackPort::accept() const
{
    for (;;) {
        isReady(-1);
        const int connection = accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0 || errno == EINVAL) {
            return connection;
        }
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
            check(-1);
        }
    }
}

bool LoopbackPort::wasReached() const { return isReady(0); }

void LoopbackPort::stop() const { shutdown(m_socket, SHUT_RDWR); }

bool LoopbackPort::isReady(int milliseconds) const
{
    pollfd watched = {m_socket, POLLIN, 0};
    return poll(&watched, 1, milliseconds) > 0;
}
