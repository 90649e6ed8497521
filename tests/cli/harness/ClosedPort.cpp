#include "harness/ClosedPort.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>

ClosedPort::ClosedPort() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(m_socket.get(), generic, size) != 0 || getsockname(m_socket.get(), generic, &size) != 0) {
        throw std::runtime_error("no port on the loopback");
    }
    m_url = "ftp://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}
