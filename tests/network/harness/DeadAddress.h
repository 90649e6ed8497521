#ifndef NETWORK_DEADADDRESS_H
#define NETWORK_DEADADDRESS_H

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
#include <string>

enum class Death
{
    Refuses,
    Silent ///< does not answer: its queue of connections is full
};

/// A port of a loopback address that nobody reaches as long as this object lives; the system chooses it.
class DeadAddress
{
public:
    DeadAddress(const std::string& address, Death death);

    std::uint16_t port() const { return m_acceptor.local_endpoint().port(); }

private:
    boost::asio::io_context m_context;
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::ip::tcp::socket m_waiting;
};

/// Whether the machine has the IPv6 address ::1.
bool hasIpv6();

#endif
