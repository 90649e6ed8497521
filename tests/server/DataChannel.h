#ifndef TESTSERVER_DATACHANNEL_H
#define TESTSERVER_DATACHANNEL_H

#include "Connection.h"
#include "Faults.h"
#include "FtpServer.h"
#include "Listener.h"

#include <boost/asio/io_context.hpp>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace testserver {

/// How a transfer on a data connection ended, for the reply that follows.
enum class TransferEnd
{
    Complete,
    Aborted,
    NotConnected,
    NoTls,
    NewSession, ///< TLS, but not the session of the control connection
    Unreadable,
    Unwritable
};

/// The passive side of data connections: listens when told, takes one connection for each transfer, and does on it
/// what the fault says.
class DataChannel
{
public:
    /// REQUIRES: all three outlive this object.
    DataChannel(boost::asio::io_context& context, OpenSockets& sockets, const ServerConfig& config);
    ~DataChannel();

    /// Listens on a free port and gives it; with `Refuse` nobody listens there.
    std::uint16_t listen(const Fault* fault);

    /// Takes the connection that a client made to the port. `control` is watched meanwhile: a client that leaves ends
    /// the wait. Null for `tls` means no TLS.
    TransferEnd open(int control, SSL_CTX* tls, const Fault* fault);

    /// Whether its TLS session was resumed.
    bool continuesTls() const { return m_connection && m_connection->continuesTls(); }

    TransferEnd send(const std::string& bytes);
    TransferEnd sendFile(const std::filesystem::path& file, std::uint64_t offset);
    /// Writes what arrives into the file. `strict` requires the client to announce the end.
    TransferEnd receiveFile(std::ofstream& content, bool strict);

    void close();

    bool hasTls() const { return m_connection && m_connection->hasTls(); }
    std::uint64_t moved() const { return m_moved; }

private:
    bool waitForClient();
    void stall();
    TransferEnd secure(SSL_CTX* tls);
    bool pace(std::size_t count);
    std::uint64_t limit() const;
    TransferEnd atLimit();
    TransferEnd write(const char* bytes, std::size_t count);
    TransferEnd finishSending();
    void endTls();
    void stopListening();

    Listener m_listener;
    OpenSockets& m_sockets;
    const ServerConfig& m_config;
    std::unique_ptr<Connection> m_connection;
    const Fault* m_fault = nullptr;
    int m_control = -1;
    std::uint64_t m_moved = 0;
};

} // namespace testserver

#endif
