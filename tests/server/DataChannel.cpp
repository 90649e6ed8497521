#include "DataChannel.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <limits>
#include <vector>

namespace testserver {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;
const char* const kGarbage = "this is no TLS handshake\r\n";

bool does(const Fault* fault, Misbehaviour misbehaviour)
{
    return fault != nullptr && fault->misbehaviour == misbehaviour;
}

} // namespace

DataChannel::DataChannel(boost::asio::io_context& context, OpenSockets& sockets, const ServerConfig& config)
    : m_listener(context), m_sockets(sockets), m_config(config)
{
}

DataChannel::~DataChannel() { close(); }

std::uint16_t DataChannel::listen(const Fault* fault)
{
    close();
    m_listener.bind(m_config.address, 0);
    m_sockets.add(m_listener.handle());
    // A port that refuses stays bound, or it could become another server's.
    if (!does(fault, Misbehaviour::Refuse)) {
        m_listener.listen();
    }
    return m_listener.port();
}

// Waits until a client is at the port; false when the client of the control connection has left, or where nobody
// listens: poll returns at once there.
bool DataChannel::waitForClient()
{
    std::array<pollfd, 2> watched = {{{m_listener.handle(), POLLIN, 0}, {m_control, POLLRDHUP, 0}}};
    while (::poll(watched.data(), watched.size(), -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return (watched[0].revents & POLLIN) != 0;
}

// Waits without reading until the client leaves, or for as long as the limit allows, if there is one. What it has sent
// can hide that it closed the data connection, so the control connection counts too.
void DataChannel::stall()
{
    std::array<pollfd, 2> watched = {{{m_connection->socket(), POLLRDHUP, 0}, {m_control, POLLRDHUP, 0}}};
    const std::chrono::milliseconds longest = m_config.stallLimit;
    const int limit = longest.count() == 0 ? -1 : static_cast<int>(longest.count());
    while (::poll(watched.data(), watched.size(), limit) < 0 && errno == EINTR) {
    }
}

TransferEnd DataChannel::open(int control, SSL_CTX* tls, const Fault* fault)
{
    m_fault = fault;
    m_control = control;
    m_moved = 0;
    if (!m_listener.isOpen() || !waitForClient()) {
        return TransferEnd::NotConnected;
    }
    boost::asio::ip::tcp::socket socket = m_listener.accept();
    if (!socket.is_open()) {
        return TransferEnd::NotConnected;
    }
    m_connection = std::make_unique<Connection>(std::move(socket), m_sockets);
    stopListening();
    return secure(does(fault, Misbehaviour::Plain) ? nullptr : tls);
}

TransferEnd DataChannel::secure(SSL_CTX* tls)
{
    if (does(m_fault, Misbehaviour::Close)) {
        m_connection->closeAfterClient();
        return TransferEnd::Aborted;
    }
    if (does(m_fault, Misbehaviour::Stall)) {
        stall();
        return TransferEnd::Aborted;
    }
    // In the clear, garbage would be ordinary data.
    if (tls != nullptr && does(m_fault, Misbehaviour::Garbage)) {
        m_connection->write(kGarbage);
        m_connection->closeAfterClient();
        return TransferEnd::NoTls;
    }
    return tls == nullptr || m_connection->startTls(tls) ? TransferEnd::Complete : TransferEnd::NoTls;
}

// Bytes after which the fault happens.
std::uint64_t DataChannel::limit() const
{
    const bool limited = does(m_fault, Misbehaviour::DropAfter) || does(m_fault, Misbehaviour::ResetAfter) ||
                         does(m_fault, Misbehaviour::ClaimAfter) || does(m_fault, Misbehaviour::StallAfter);
    return limited ? m_fault->number : std::numeric_limits<std::uint64_t>::max();
}

TransferEnd DataChannel::atLimit()
{
    switch (m_fault->misbehaviour) {
    case Misbehaviour::ClaimAfter:
        endTls();
        m_connection->close();
        return TransferEnd::Complete;
    case Misbehaviour::ResetAfter:
        m_connection->reset();
        return TransferEnd::Aborted;
    case Misbehaviour::StallAfter:
        stall();
        return TransferEnd::Aborted;
    default:
        m_connection->close();
        return TransferEnd::Aborted;
    }
}

// Waits as long as the fault requires for these bytes.
bool DataChannel::pace(std::size_t count)
{
    if (!does(m_fault, Misbehaviour::Slow) || m_fault->number == 0) {
        return true;
    }
    return m_sockets.wait(std::chrono::microseconds(count * 1000000 / m_fault->number));
}

// Sends a block as far as the limit lets it; Complete while the transfer may go on.
TransferEnd DataChannel::write(const char* bytes, std::size_t count)
{
    const auto allowed = static_cast<std::size_t>(std::min<std::uint64_t>(count, limit() - m_moved));
    if (!pace(allowed) || !m_connection->write(bytes, allowed)) {
        return TransferEnd::Aborted;
    }
    m_moved += allowed;
    return TransferEnd::Complete;
}

TransferEnd DataChannel::finishSending()
{
    endTls();
    m_connection->close();
    return TransferEnd::Complete;
}

void DataChannel::endTls()
{
    if (m_config.endsUnannounced || does(m_fault, Misbehaviour::NoCloseNotify)) {
        m_connection->endTlsUnannounced();
    } else {
        m_connection->endTls();
    }
}

TransferEnd DataChannel::send(const std::string& bytes)
{
    if (write(bytes.data(), bytes.size()) != TransferEnd::Complete) {
        return TransferEnd::Aborted;
    }
    return m_moved == limit() ? atLimit() : finishSending();
}

TransferEnd DataChannel::sendFile(const std::filesystem::path& file, std::uint64_t offset)
{
    std::ifstream content(file, std::ios::binary);
    if (!content) {
        return TransferEnd::Unreadable;
    }
    content.seekg(static_cast<std::streamoff>(offset));
    // A slow transfer goes in small blocks, or it would come in bursts.
    std::vector<char> block(does(m_fault, Misbehaviour::Slow) ? 1024 : kBlock);
    while (m_moved != limit() && content) {
        content.read(block.data(), static_cast<std::streamsize>(block.size()));
        if (write(block.data(), static_cast<std::size_t>(content.gcount())) != TransferEnd::Complete) {
            return TransferEnd::Aborted;
        }
    }
    return m_moved == limit() ? atLimit() : finishSending();
}

TransferEnd DataChannel::receiveFile(std::ofstream& content, bool strict)
{
    if (!content) {
        return TransferEnd::Unwritable;
    }
    std::vector<char> block(kBlock);
    while (m_moved != limit()) {
        const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), limit() - m_moved));
        const std::size_t got = m_connection->read(block.data(), room);
        if (got == 0) {
            break;
        }
        content.write(block.data(), static_cast<std::streamsize>(got));
        m_moved += got;
        if (!content.flush() || !pace(got)) {
            return TransferEnd::Aborted;
        }
    }
    if (m_moved == limit()) {
        return atLimit();
    }
    if (strict && !m_connection->endedCleanly()) {
        return TransferEnd::Aborted;
    }
    return finishSending();
}

void DataChannel::close()
{
    m_connection.reset();
    stopListening();
}

void DataChannel::stopListening()
{
    if (m_listener.isOpen()) {
        m_sockets.remove(m_listener.handle());
        m_listener.close();
    }
}

} // namespace testserver
