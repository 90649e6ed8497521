#ifndef EXAMPLES_NOTIFYSOCKET_H
#define EXAMPLES_NOTIFYSOCKET_H

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

/// What a service tells its manager.
class NotifySocket
{
public:
    explicit NotifySocket(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (path.front() == '@') {
            address.sun_path[0] = '\0';
        }
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
        if (bind(m_socket, reinterpret_cast<const sockaddr*>(&address), length) != 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
    }
    ~NotifySocket() { close(m_socket); }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// Waits for the next message.
    std::string next() const
    {
        std::array<char, 4096> bytes = {};
        const ssize_t got = recv(m_socket, bytes.data(), bytes.size(), 0);
        return {bytes.data(), got > 0 ? static_cast<std::size_t>(got) : 0};
    }

private:
    int m_socket;
};

#endif
