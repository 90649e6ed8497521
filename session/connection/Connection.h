#ifndef SFTPCLIENT_SESSION_CONNECTION_H
#define SFTPCLIENT_SESSION_CONNECTION_H

#include "call/Call.h"
#include "call/StopSwitch.h"
#include "connection/Replies.h"

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace session {

/// What a server has said about itself; asked once a connection.
struct Features
{
    bool mlst = false;         ///< MLSD and MLST
    bool mfmt = false;         ///< a file's time can be set
    bool hash = false;         ///< HASH with SHA-256 ...
    bool hashIsSha256 = false; ///< ... which need not be chosen first
    bool xsha256 = false;
    bool xcrc = false;
};

/// A connection to one server with one login: an easy handle that is used again and again, because libcurl keeps the
/// TLS session there that the server wants to see again on each data connection.
class Connection
{
public:
    explicit Connection(StopSwitch& stop);

    /// Says QUIT, and does not wait for the answer.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// The handle, as new but for the connection that it holds.
    CURL* renew();

    /// Makes the transfer that the handle is set up for.
    CURLcode run(Call& call);

    /// Keeps a line that the server says; true where it ends a reply.
    bool hear(std::string_view line) { return m_replies.add(line); }
    /// What the server said during the last transfer.
    const Replies& replies() const { return m_replies; }
    /// libcurl's own words about the last transfer's failure.
    std::string detail() const { return m_detail.data(); }

    /// No request may come here any more.
    void giveUp() { m_usable = false; }
    /// The same, at once: nothing more is sent, and nobody waits for a reply.
    void cut();
    bool isUsable() const { return m_usable; }
    bool isCut() const { return m_isCut; }
    /// Whether it leads to the server.
    bool isOpen() const { return !m_sockets.empty(); }

    std::optional<Features> features;
    /// TLS 1.2 was refused: the server has nothing but 1.3.
    bool newestTls = false;
    std::chrono::steady_clock::time_point lastUsed = std::chrono::steady_clock::now();

private:
    struct Socket
    {
        curl_socket_t number;
        std::unique_ptr<StopSwitch::Reach> reach;
    };

    static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address) noexcept;
    static int closeSocket(void* self, curl_socket_t socket) noexcept;

    void reachSockets();
    void shutAll(int how) const;
    CURLcode drive(Call& call);
    bool wait(int milliseconds, bool watchesReplies);
    CURLcode resultOfTransfer() const;

    StopSwitch& m_stop;
    std::vector<Socket> m_sockets;
    Call* m_call = nullptr; // of the transfer that runs
    Replies m_replies;
    std::array<char, CURL_ERROR_SIZE> m_detail = {};
    bool m_usable = true;
    bool m_isCut = false;
    // In this order: the handle leaves the multi handle, which closes the connection, before it goes itself.
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_easy;
    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> m_multi;
};

} // namespace session

#endif
