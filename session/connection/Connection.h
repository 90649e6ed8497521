#ifndef SFTPCLIENT_SESSION_CONNECTION_H
#define SFTPCLIENT_SESSION_CONNECTION_H

#include "call/Call.h"
#include "call/StopSwitch.h"
#include "connection/DataEnd.h"
#include "connection/Replies.h"

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace session {

/// What a server supports; asked once per connection.
struct Features
{
    bool mlst = false;         ///< MLSD and MLST
    bool mfmt = false;         ///< a file's time can be set
    bool hash = false;         ///< HASH with SHA-256 ...
    bool hashIsSha256 = false; ///< ... which need not be chosen first
    bool xsha256 = false;
    bool xcrc = false;
};

/// A connection to one server with one login: an easy handle that is reused, because libcurl keeps in it the TLS
/// session that the server expects again on each data connection.
class Connection
{
public:
    explicit Connection(StopSwitch& stop);

    /// Sends QUIT, and does not wait for the reply.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// The handle, reset except for the connection it holds; where that was cut, it is to make a new one.
    CURL* renew();

    /// Performs the transfer that the handle is set up for.
    CURLcode run(Call& call);

    /// Waits within a transfer, where the server is faster than it may be; not longer than the call may go on.
    void rest(Call& call, Call::Clock::time_point until) const;

    /// Records a line from the server; true if it ends a reply.
    bool hear(std::string_view line) { return m_replies.add(line); }
    /// The server's replies during the last transfer.
    const Replies& replies() const { return m_replies; }
    /// libcurl's error text for the last transfer.
    std::string detail() const { return m_detail.data(); }
    /// Why the last transfer did not get a socket that it wanted, which libcurl does not tell; empty if it got all.
    const std::string& missedSocket() const { return m_missedSocket; }

    /// It must not be used for another call.
    void giveUp() { m_usable = false; }
    /// The same, at once: nothing more is sent, and no reply is awaited.
    void cut();
    bool isUsable() const { return m_usable; }
    /// Whether it is connected.
    bool isOpen() const { return !m_sockets.empty(); }
    /// Whether the server has sent something, or left, while nothing was asked.
    bool hasNews() const;
    /// Whether libcurl had read all that it knows from the control connection before this transfer began.
    bool hasReadNothing() const;
    /// A reply to nothing has been taken for that to this transfer's first command, perhaps.
    bool wasToldUnasked = false;

    std::optional<Features> features;
    /// The server refused TLS 1.2 and supports only 1.3.
    bool newestTls = false;
    /// Of the last transfer. Here, because it must outlive libcurl's connections.
    DataEnd dataEnd;
    std::chrono::steady_clock::time_point lastUsed = std::chrono::steady_clock::now();

private:
    /// A socket of libcurl's, and our own descriptor for it: libcurl 7.88 closes a socket that did not connect without
    /// its callback, and the number may then belong to another connection.
    class Socket
    {
    public:
        explicit Socket(curl_socket_t number);
        ~Socket();
        Socket(const Socket&) = delete;
        Socket& operator=(const Socket&) = delete;

        curl_socket_t number() const { return m_number; }
        /// -1 if the process has no file descriptor left.
        int own() const { return m_own; }
        /// Whether libcurl still has it open.
        bool isOpen() const;
        /// How many bytes libcurl has read; nothing if there were none, or the kernel does not tell.
        std::optional<std::uint64_t> read() const;
        void reachBy(StopSwitch& stop) { m_reach.emplace(stop, m_own); }
        void leaveAlone() { m_reach.reset(); }

    private:
        curl_socket_t m_number;
        int m_own;
        std::uint64_t m_cookie;
        std::optional<StopSwitch::Reach> m_reach;
    };

    static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address) noexcept;
    static int closeSocket(void* self, curl_socket_t socket) noexcept;

    void noteMissedSocket(int error);
    void shutAll(int how) const;
    void forgetClosed();
    CURLcode drive(Call& call);
    bool wait(int milliseconds, bool watchesReplies);
    CURLcode resultOfTransfer() const;

    StopSwitch& m_stop;
    std::list<Socket> m_sockets;
    Call* m_call = nullptr; // of the current transfer
    // Of the control connection, when the transfer began.
    std::optional<std::uint64_t> m_readBefore;
    Replies m_replies;
    std::array<char, CURL_ERROR_SIZE> m_detail = {};
    std::string m_missedSocket;
    bool m_usable = true;
    bool m_isCut = false;
    // In this order: the multi handle goes first and closes the connection, while the easy handle still exists.
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_easy;
    std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> m_multi;
};

} // namespace session

#endif
