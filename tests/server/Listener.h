#ifndef TESTSERVER_LISTENER_H
#define TESTSERVER_LISTENER_H

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
#include <string>

namespace testserver {

/// A port of a loopback address. One of ::1 whose number the system chooses is nobody else's on 127.0.0.1, either:
/// clients of "localhost" try both addresses, and must not reach another server at the wrong one.
class Listener
{
public:
    /// REQUIRES: `context` outlives this object.
    explicit Listener(boost::asio::io_context& context) : m_acceptor(context), m_sameNumber(context) {}

    /// Takes this port, or one that the system chooses where it is 0, and refuses connections until it listens.
    /// Throws `boost::system::system_error`.
    void bind(const std::string& address, std::uint16_t port);
    void listen() { m_acceptor.listen(); }
    void close();

    bool isOpen() const { return m_acceptor.is_open(); }
    std::uint16_t port() const { return m_acceptor.local_endpoint().port(); }
    int handle() { return m_acceptor.native_handle(); }

    /// Waits for the next connection, which is not open on failure.
    boost::asio::ip::tcp::socket accept();

private:
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::ip::tcp::socket m_sameNumber;
};

} // namespace testserver

#endif
