#include "Connection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include <openssl/err.h>

#include <array>

namespace testserver {

namespace asio = boost::asio;

namespace {

constexpr std::size_t kLongestLine = std::size_t{64} * 1024;

}

Connection::Connection(asio::ip::tcp::socket socket, OpenSockets& sockets)
    : m_socket(std::move(socket)), m_sockets(sockets)
{
    boost::system::error_code ignored;
    m_socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    m_sockets.add(m_socket.native_handle());
}

Connection::~Connection() { close(); }

bool Connection::startTls(SSL_CTX* context)
{
    ERR_clear_error();
    Tls tls(SSL_new(context));
    if (tls == nullptr || SSL_set_fd(tls.get(), m_socket.native_handle()) != 1 || SSL_accept(tls.get()) != 1) {
        return false;
    }
    m_tls = std::move(tls);
    return true;
}

bool Connection::write(const char* bytes, std::size_t count)
{
    if (m_tls) {
        ERR_clear_error();
        std::size_t written = 0;
        return count == 0 || SSL_write_ex(m_tls.get(), bytes, count, &written) == 1;
    }
    boost::system::error_code failed;
    asio::write(m_socket, asio::buffer(bytes, count), failed);
    return !failed;
}

std::size_t Connection::read(char* bytes, std::size_t count)
{
    std::size_t got = 0;
    if (m_tls) {
        ERR_clear_error();
        if (SSL_read_ex(m_tls.get(), bytes, count, &got) == 1) {
            return got;
        }
        m_endedCleanly = (SSL_get_shutdown(m_tls.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
        return 0;
    }
    boost::system::error_code failed;
    got = m_socket.read_some(asio::buffer(bytes, count), failed);
    m_endedCleanly = failed == asio::error::eof;
    return failed ? 0 : got;
}

std::optional<std::string> Connection::readLine()
{
    std::array<char, 4096> block = {};
    for (;;) {
        const std::size_t end = m_unread.find('\n');
        if (end != std::string::npos) {
            std::string line = m_unread.substr(0, end);
            m_unread.erase(0, end + 1);
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            return line;
        }
        const std::size_t got = m_unread.size() > kLongestLine ? 0 : read(block.data(), block.size());
        if (got == 0) {
            return std::nullopt;
        }
        m_unread.append(block.data(), got);
    }
}

void Connection::waitForEnd()
{
    std::array<char, 4096> block = {};
    while (read(block.data(), block.size()) != 0) {
    }
}

void Connection::stall(std::chrono::milliseconds limit)
{
    if (limit.count() == 0) {
        waitForEnd();
    } else {
        m_sockets.wait(limit);
    }
}

void Connection::endTls()
{
    if (m_tls == nullptr) {
        return;
    }
    ERR_clear_error();
    // The second call waits for the client's own close_notify; closing before it arrives could reset the connection.
    if (SSL_shutdown(m_tls.get()) == 0) {
        SSL_shutdown(m_tls.get());
    }
}

void Connection::endTlsUnannounced()
{
    if (m_tls != nullptr) {
        SSL_set_quiet_shutdown(m_tls.get(), 1);
        SSL_shutdown(m_tls.get());
    }
}

void Connection::close()
{
    // TLS that outlived its socket could write to whichever connection gets the same descriptor next.
    m_tls.reset();
    if (m_socket.is_open()) {
        m_sockets.remove(m_socket.native_handle());
        boost::system::error_code ignored;
        m_socket.close(ignored);
    }
}

void Connection::closeAfterClient()
{
    boost::system::error_code ignored;
    m_socket.shutdown(asio::socket_base::shutdown_send, ignored);
    waitForEnd();
    close();
}

void Connection::reset()
{
    boost::system::error_code ignored;
    m_socket.set_option(asio::socket_base::linger(true, 0), ignored);
    close();
}

} // namespace testserver
