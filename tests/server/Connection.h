#ifndef TESTSERVER_CONNECTION_H
#define TESTSERVER_CONNECTION_H

#include "OpenSockets.h"
#include "OpenSslObjects.h"

#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <optional>
#include <string>

namespace testserver {

/// One TCP connection with a client, in the clear until TLS is started on it. All calls block; a failure or the end of
/// the connection shows in what they return. Registered with the session's sockets as long as it is open.
class Connection
{
public:
    Connection(boost::asio::ip::tcp::socket socket, OpenSockets& sockets);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Does the server's side of the handshake; false when it fails, and the connection is in the clear as before.
    bool startTls(SSL_CTX* context);
    bool hasTls() const { return m_tls != nullptr; }
    /// Whether the TLS session was resumed.
    bool continuesTls() const { return m_tls != nullptr && SSL_session_reused(m_tls.get()) == 1; }

    bool write(const std::string& bytes) { return write(bytes.data(), bytes.size()); }
    bool write(const char* bytes, std::size_t count);

    /// Reads up to `count` bytes; 0 at the end, however it came about.
    std::size_t read(char* bytes, std::size_t count);

    /// Whether the client announced the end that `read` met: with close_notify if the connection uses TLS.
    bool endedCleanly() const { return m_endedCleanly; }

    /// A line without its line end, or nothing at the end; a line of more than 64 KiB counts as the end.
    std::optional<std::string> readLine();

    /// Whether bytes have arrived that no `read` has returned: a command sent ahead of TLS, for example.
    bool hasUnread() const { return !m_unread.empty(); }

    /// Reads and drops everything until the client leaves.
    void waitForEnd();

    /// Does not answer until the client leaves, or for as long as the limit allows; 0 is no limit.
    void stall(std::chrono::milliseconds limit);

    /// Announces the end to the client (close_notify) and waits for its answer.
    void endTls();
    /// The same without the announcement: the TLS session stays valid nevertheless.
    void endTlsUnannounced();
    void close();
    /// Closes after the client: what it still sends is read and dropped, or it would turn the close into a reset.
    void closeAfterClient();
    /// Closes with a TCP reset.
    void reset();

    int socket() { return m_socket.native_handle(); }

private:
    boost::asio::ip::tcp::socket m_socket;
    OpenSockets& m_sockets;
    Tls m_tls;
    std::string m_unread;
    bool m_endedCleanly = false;
};

} // namespace testserver

#endif
