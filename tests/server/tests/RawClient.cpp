#include "RawClient.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include <stdexcept>

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

// One for all: each has its own descriptors.
asio::io_context& context()
{
    static asio::io_context instance;
    return instance;
}

} // namespace

RawClient::RawClient(std::uint16_t port) : m_socket(context())
{
    m_socket.connect({asio::ip::address_v4::loopback(), port});
}

void RawClient::send(const std::string& bytes)
{
    boost::system::error_code left; // the next read reports it
    asio::write(m_socket, asio::buffer(bytes), left);
}

std::string RawClient::line()
{
    std::string text;
    char byte = 0;
    boost::system::error_code end;
    while (m_socket.read_some(asio::buffer(&byte, 1), end) == 1 && byte != '\n') {
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
    boost::system::error_code end;
    asio::read(m_socket, asio::dynamic_buffer(text), end);
    return end == asio::error::connection_reset ? text + "(reset)" : text;
}

void RawClient::finish()
{
    boost::system::error_code left;
    m_socket.shutdown(tcp::socket::shutdown_send, left);
}

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
    boost::system::error_code error;
    tcp::socket(context()).connect({asio::ip::address_v4::loopback(), port}, error);
    return error == asio::error::connection_refused;
}
