#include "Listener.h"

namespace testserver {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

constexpr int kMostTries = 100;

} // namespace

void Listener::bind(const std::string& address, std::uint16_t port)
{
    const tcp::endpoint wanted(asio::ip::make_address(address), port);
    const bool isPair = wanted.address().is_v6() && port == 0;
    boost::system::error_code taken;
    for (int tries = 0; tries < kMostTries; ++tries) {
        close();
        m_acceptor.open(wanted.protocol());
        m_acceptor.set_option(tcp::acceptor::reuse_address(true));
        m_acceptor.bind(wanted);
        if (!isPair) {
            return;
        }
        m_sameNumber.open(tcp::v4());
        if (!m_sameNumber.bind({asio::ip::address_v4::loopback(), this->port()}, taken)) {
            return;
        }
    }
    throw boost::system::system_error(taken);
}

void Listener::close()
{
    boost::system::error_code ignored;
    m_acceptor.close(ignored);
    m_sameNumber.close(ignored);
}

tcp::socket Listener::accept()
{
    tcp::socket socket(m_acceptor.get_executor());
    boost::system::error_code failed;
    m_acceptor.accept(socket, failed);
    return socket;
}

} // namespace testserver
