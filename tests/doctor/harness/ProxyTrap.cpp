#include "harness/ProxyTrap.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

ProxyTrap::ProxyTrap() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof own;
    auto* const address = reinterpret_cast<sockaddr*>(&own);
    if (!m_socket.isOpen() || bind(m_socket.get(), address, size) != 0 || listen(m_socket.get(), SOMAXCONN) != 0 ||
        getsockname(m_socket.get(), address, &size) != 0) {
        throw std::system_error(errno, std::generic_category(), "there is no port to listen on");
    }
    m_address = "127.0.0.1:" + std::to_string(ntohs(own.sin_port));
}

bool ProxyTrap::wasReached() const
{
    const Descriptor connection(accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
    return connection.isOpen();
}
