#include "harness/Playback.h"

#include "harness/Require.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <tuple>
#include <utility>

namespace {

// A client that waits for the rest of a reply is not kept waiting for long.
constexpr int kSilence = 20;

std::pair<int, std::uint16_t> listenOnFreePort()
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    require(bind(listener, generic, length) == 0 && listen(listener, 64) == 0 &&
                getsockname(listener, generic, &length) == 0,
            "the playback listens on 127.0.0.1");
    return {listener, ntohs(address.sin_port)};
}

void send(int connection, const std::string& bytes)
{
    static_cast<void>(::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

bool readable(int connection, int milliseconds)
{
    pollfd watched = {connection, POLLIN, 0};
    return poll(&watched, 1, milliseconds) > 0;
}

// Negative when the listener was shut down. A call of accept() that waits has already taken a descriptor, and whoever
// counts descriptors would find it missing: so the waiting is poll()'s.
int nextConnection(int listener)
{
    readable(listener, -1);
    return accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
}

// False when the client has left.
bool hear(int connection)
{
    std::array<char, 4096> heard = {};
    return recv(connection, heard.data(), heard.size(), 0) > 0;
}

void replaceAll(std::string& text, const std::string& what, const std::string& with)
{
    for (std::string::size_type at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

} // namespace

Playback::Playback()
{
    std::tie(m_control, m_controlPort) = listenOnFreePort();
    std::tie(m_data, m_dataPort) = listenOnFreePort();
    m_controlThread = std::thread([this] { serveControl(); });
    m_dataThread = std::thread([this] { serveData(); });
}

Playback::~Playback()
{
    // Wakes the threads, which then find nothing to accept.
    shutdown(m_control, SHUT_RDWR);
    shutdown(m_data, SHUT_RDWR);
    m_controlThread.join();
    m_dataThread.join();
    close(m_control);
    close(m_data);
}

void Playback::load(const std::string& script)
{
    const std::string::size_type content = script.find('^');
    std::string replies = script.substr(0, content);
    replaceAll(replies, "@", std::to_string(m_dataPort));
    replaceAll(replies, "#", std::to_string(m_dataPort / 256) + "," + std::to_string(m_dataPort % 256));

    const std::lock_guard<std::mutex> lock(m_mutex);
    m_content = content == std::string::npos ? "" : script.substr(content + 1);
    m_replies.clear();
    for (std::string::size_type begin = 0; begin != std::string::npos;) {
        const std::string::size_type end = replies.find('~', begin);
        m_replies.push_back(replies.substr(begin, end == std::string::npos ? end : end - begin));
        begin = end == std::string::npos ? end : end + 1;
    }
}

void Playback::waitForEndOf(unsigned connections)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ended.wait(lock, [&] { return m_endedConnections >= connections; });
}

void Playback::countEnd()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_endedConnections;
    m_ended.notify_all();
}

void Playback::serveControl()
{
    for (int connection = 0; (connection = nextConnection(m_control)) >= 0;) {
        play(connection);
        close(connection);
        countEnd();
    }
}

void Playback::serveData()
{
    for (int connection = 0; (connection = nextConnection(m_data)) >= 0;) {
        std::string content;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            content = m_content;
        }
        send(connection, content);
        shutdown(connection, SHUT_WR);
        while (readable(connection, kSilence) && hear(connection)) {
        }
        close(connection);
        countEnd();
    }
}

void Playback::play(int connection)
{
    std::vector<std::string> replies;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        replies = m_replies;
    }
    for (const std::string& reply : replies) {
        send(connection, reply);
        if (readable(connection, kSilence) && !hear(connection)) {
            return;
        }
    }
}
