#include "connection/Connection.h"

#include "call/SetOption.h"

#include <fcntl.h>
#include <linux/tcp.h> // netinet/tcp.h does not know tcpi_bytes_received
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>
#include <system_error>
#include <utility>

namespace session {

namespace {

/// How long to wait before asking libcurl again, in milliseconds. libcurl 7.88 does not name every socket that it waits
/// for: while a data connection is being made it must be asked often, and after a long silence seldom. An event is
/// noticed late by at most an eighth of the time waited for it.
int patience(Call::Clock::duration idle)
{
    constexpr std::chrono::milliseconds::rep kShortest = 1;
    constexpr std::chrono::milliseconds::rep kLongest = 100;
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(idle).count();
    return static_cast<int>(std::clamp(waited / 8, kShortest, kLongest));
}

/// The kernel's unique number for a socket; 0 if the descriptor is not a socket.
std::uint64_t cookieOf(int descriptor)
{
    std::uint64_t cookie = 0;
    socklen_t size = sizeof cookie;
    return getsockopt(descriptor, SOL_SOCKET, SO_COOKIE, &cookie, &size) == 0 ? cookie : 0;
}

/// How many bytes have come over a TCP connection; nothing if there were none, or the kernel does not tell.
std::optional<std::uint64_t> receivedBy(int descriptor)
{
    tcp_info info = {};
    socklen_t size = sizeof info;
    constexpr std::size_t kNeeded = offsetof(tcp_info, tcpi_bytes_received) + sizeof(std::uint64_t);
    const bool isTold = getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && size >= kNeeded;
    return isTold && info.tcpi_bytes_received > 0 ? std::make_optional<std::uint64_t>(info.tcpi_bytes_received)
                                                  : std::nullopt;
}

} // namespace

Connection::Connection(StopSwitch& stop)
    : m_stop(stop), m_easy(curl_easy_init(), curl_easy_cleanup), m_multi(curl_multi_init(), curl_multi_cleanup)
{
    if (!m_easy || !m_multi) {
        throw std::bad_alloc();
    }
    curl_multi_setopt(m_multi.get(), CURLMOPT_MAXCONNECTS, 1L);
}

// libcurl would wait for the reply to its QUIT: with only the reading side shut, QUIT is sent and not waited for.
Connection::~Connection()
{
    shutAll(m_usable ? SHUT_RD : SHUT_RDWR);
    m_multi.reset();
    m_easy.reset();
}

void Connection::shutAll(int how) const
{
    for (const Socket& each : m_sockets) {
        shutdown(each.own(), how);
    }
}

bool Connection::hasNews() const
{
    pollfd control = {m_sockets.empty() ? -1 : m_sockets.front().own(), POLLIN, 0};
    return poll(&control, 1, 0) > 0 && (control.revents & POLLIN) != 0;
}

bool Connection::hasReadNothing() const
{
    return m_readBefore && !m_sockets.empty() && m_sockets.front().read() == m_readBefore;
}

void Connection::cut()
{
    giveUp();
    m_isCut = true;
    shutAll(SHUT_RDWR);
}

CURL* Connection::renew()
{
    CURL* const handle = m_easy.get();
    curl_easy_reset(handle);
    m_replies = {};
    m_detail = {};
    dataEnd = {};
    wasToldUnasked = false;
    m_missedSocket.clear();
    set(handle, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    set(handle, CURLOPT_OPENSOCKETDATA, this);
    set(handle, CURLOPT_CLOSESOCKETFUNCTION, closeSocket);
    set(handle, CURLOPT_CLOSESOCKETDATA, this);
    set(handle, CURLOPT_ERRORBUFFER, m_detail.data());
    set(handle, CURLOPT_NOSIGNAL, 1L);
#if LIBCURL_VERSION_NUM >= 0x075700 // older releases wait for a pending name lookup when the call ends
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
#endif
    set(handle, CURLOPT_TCP_KEEPALIVE, 1L);
    if (m_isCut) {
        set(handle, CURLOPT_FRESH_CONNECT, 1L);
        m_isCut = false;
    }
    return handle;
}

CURLcode Connection::run(Call& call)
{
    m_call = &call;
    m_readBefore = m_sockets.empty() ? std::nullopt : m_sockets.front().read();
    for (Socket& each : m_sockets) {
        each.reachBy(m_stop);
    }
    if (curl_multi_add_handle(m_multi.get(), m_easy.get()) != CURLM_OK) {
        throw std::bad_alloc();
    }
    const CURLcode result = drive(call);
    const CURLcode verdict = call.verdict();
    if (verdict != CURLE_OK) {
        cut();
    }
    curl_multi_remove_handle(m_multi.get(), m_easy.get());
    forgetClosed();
    for (Socket& each : m_sockets) {
        each.leaveAlone();
    }
    lastUsed = std::chrono::steady_clock::now();
    // libcurl's result may be that of a socket that was shut down under it.
    return result != CURLE_OK && verdict != CURLE_OK ? verdict : result;
}

CURLcode Connection::drive(Call& call)
{
    call.await(Call::Awaited::Nothing);
    bool hasUnreadReply = false;
    bool watchesReplies = true;
    for (;;) {
        const Call::Clock::time_point sign = call.lastSign();
        const auto conversation = std::make_pair(m_replies.lines().size(), m_sockets.size());
        int running = 0;
        if (curl_multi_perform(m_multi.get(), &running) != CURLM_OK) {
            return CURLE_FAILED_INIT;
        }
        forgetClosed();
        if (running == 0) {
            return resultOfTransfer();
        }
        if (const CURLcode verdict = call.verdict()) {
            return verdict;
        }
        // After a reply libcurl may have more to do at once, without naming anything to wait for.
        const bool goesOn = conversation != std::make_pair(m_replies.lines().size(), m_sockets.size());
        // A reply that libcurl leaves unread for now would end every wait.
        watchesReplies = goesOn || call.lastSign() != sign || (watchesReplies && !hasUnreadReply);
        hasUnreadReply = wait(goesOn ? 0 : patience(Call::Clock::now() - call.lastSign()), watchesReplies);
    }
}

// Returns whether the control connection, which libcurl 7.88 does not always name, has something to read.
bool Connection::wait(int milliseconds, bool watchesReplies)
{
    std::array<curl_waitfd, 2> watched = {{{m_stop.descriptor(), CURL_WAIT_POLLIN, 0}, {-1, CURL_WAIT_POLLIN, 0}}};
    const bool both = watchesReplies && !m_sockets.empty();
    if (both) {
        watched[1].fd = m_sockets.front().own();
    }
    int ready = 0;
    curl_multi_poll(m_multi.get(), watched.data(), both ? 2 : 1, milliseconds, &ready);
    return watched[1].revents != 0;
}

void Connection::rest(Call& call, Call::Clock::time_point until) const
{
    for (auto now = Call::Clock::now(); now < until && call.verdict() == CURLE_OK; now = Call::Clock::now()) {
        constexpr std::chrono::milliseconds kLongest(100);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - now);
        pollfd stop = {m_stop.descriptor(), POLLIN, 0};
        poll(&stop, 1, static_cast<int>(std::min(left, kLongest).count()));
        call.sawSign(); // nothing is awaited of the server
        call.report();
    }
}

CURLcode Connection::resultOfTransfer() const
{
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &left)) {
        if (message->msg == CURLMSG_DONE) {
            return message->data.result;
        }
    }
    return CURLE_FAILED_INIT;
}

curl_socket_t Connection::openSocket(void* self, curlsocktype /*purpose*/, curl_sockaddr* address) noexcept
{
    auto& connection = *static_cast<Connection*>(self);
    const int number = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    try {
        if (number < 0) {
            connection.noteMissedSocket(errno);
            return CURL_SOCKET_BAD;
        }
        Socket& added = connection.m_sockets.emplace_back(number);
        if (added.own() >= 0) {
            added.reachBy(connection.m_stop);
            return number;
        }
        connection.noteMissedSocket(EMFILE);
    } catch (...) {
        connection.m_call->keepException();
    }
    if (number >= 0) {
        close(number);
    }
    return CURL_SOCKET_BAD;
}

// Of other reasons, such as a family of addresses that the machine does not have, libcurl tells.
void Connection::noteMissedSocket(int error)
{
    if (error == EMFILE || error == ENFILE) {
        m_missedSocket = "no socket can be made: " + std::generic_category().message(error);
    }
}

int Connection::closeSocket(void* self, curl_socket_t socket) noexcept
{
    static_cast<Connection*>(self)->m_sockets.remove_if(
        [socket](const Socket& each) { return each.number() == socket; });
    return close(socket);
}

void Connection::forgetClosed()
{
    m_sockets.remove_if([](const Socket& each) { return !each.isOpen(); });
}

Connection::Socket::Socket(curl_socket_t number)
    : m_number(number), m_own(fcntl(number, F_DUPFD_CLOEXEC, 0)), m_cookie(cookieOf(number))
{
}

Connection::Socket::~Socket()
{
    m_reach.reset(); // first: the switch may be shutting the descriptor down
    if (m_own >= 0) {
        close(m_own);
    }
}

// Both numbers must be of one moment: a reply that arrives between two questions would count as read.
std::optional<std::uint64_t> Connection::Socket::read() const
{
    constexpr int kMostTries = 100; // a server that never pauses
    for (int i = 0; i < kMostTries; ++i) {
        int unread = 0;
        const std::optional<std::uint64_t> received = receivedBy(m_own);
        if (!received || ioctl(m_own, FIONREAD, &unread) != 0) {
            return std::nullopt;
        }
        if (received == receivedBy(m_own)) {
            return *received - static_cast<std::uint64_t>(unread);
        }
    }
    return std::nullopt;
}

bool Connection::Socket::isOpen() const { return cookieOf(m_number) == m_cookie; }

} // namespace session
