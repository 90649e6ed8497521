#include "harness/RawClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace {

// Zero, or the error number.
int connectTo(int socket, std::uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 ? 0 : errno;
}

} // namespace

RawClient::RawClient(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
{
    if (const int error = connectTo(m_socket, port); error != 0) {
        ::close(m_socket);
        throw std::system_error(error, std::generic_category(), "No connection to port " + std::to_string(port));
    }
}

RawClient::~RawClient() { ::close(m_socket); }

void RawClient::send(const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0) {
            return; // the server has left; the next read tells how
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string RawClient::line()
{
    std::string text;
    char byte = 0;
    while (::recv(m_socket, &byte, 1, 0) == 1 && byte != '\n') {
        text += byte;
    }
    if (!text.empty() && text.back() == '\r') {
        text.pop_back();
    }
    return text;
}

std::string RawClient::ask(const std::string& command)
{
    send(command + "\r\n");
    return line();
}

std::string RawClient::rest()
{
    std::string text;
    std::array<char, 65536> block = {};
    for (;;) {
        const ssize_t got = ::recv(m_socket, block.data(), block.size(), 0);
        if (got <= 0) {
            return got < 0 && errno == ECONNRESET ? text + "(reset)" : text;
        }
        text.append(block.data(), static_cast<std::size_t>(got));
    }
}

void RawClient::finish() { ::shutdown(m_socket, SHUT_WR); }

std::uint16_t RawClient::extendedPassive()
{
    const std::string reply = ask("EPSV");
    const std::size_t port = reply.find("(|||");
    if (reply.compare(0, 4, "229 ") != 0 || port == std::string::npos) {
        throw std::runtime_error("EPSV is answered with " + reply);
    }
    return static_cast<std::uint16_t>(std::stoi(reply.substr(port + 4)));
}

bool isRefused(std::uint16_t port)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    const int error = connectTo(socket, port);
    ::close(socket);
    return error == ECONNREFUSED;
}
