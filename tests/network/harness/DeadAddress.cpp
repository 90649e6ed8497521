#include "harness/DeadAddress.h"

namespace asio = boost::asio;
using asio::ip::tcp;

DeadAddress::DeadAddress(const std::string& address, Death death) : m_acceptor(m_context), m_waiting(m_context)
{
    const tcp::endpoint any(asio::ip::make_address(address), 0);
    m_acceptor.open(any.protocol());
    m_acceptor.bind(any);
    if (death == Death::Silent) {
        // There is room for one.
        m_acceptor.listen(0);
        m_waiting.connect(m_acceptor.local_endpoint());
    }
}

bool hasIpv6()
{
    asio::io_context context;
    tcp::acceptor acceptor(context, tcp::v6());
    boost::system::error_code failed;
    acceptor.bind({asio::ip::address_v6::loopback(), 0}, failed);
    return !failed;
}
