#ifndef SERVERTEST_RAWCLIENT_H
#define SERVERTEST_RAWCLIENT_H

#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
#include <string>

/// A TCP connection to 127.0.0.1 that sends and reads what the test asks for, in the clear.
class RawClient
{
public:
    explicit RawClient(std::uint16_t port);

    void send(const std::string& bytes);

    /// The next line without its line end, or what came before the end of the connection.
    std::string line();

    /// Sends a command and returns the line that answers it.
    std::string ask(const std::string& command);

    /// All that comes until the server ends the connection, and "(reset)" if it ended so.
    std::string rest();

    /// Shuts down sending; the server can still send.
    void finish();

    /// Asks for a port for a data connection with EPSV.
    std::uint16_t extendedPassive();

private:
    boost::asio::ip::tcp::socket m_socket;
};

/// A connection to the port is refused.
bool isRefused(std::uint16_t port);

#endif
