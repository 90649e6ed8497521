#include "harness/Playback.h"

#include "harness/Require.h"
#include "harness/Wire.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <tuple>
#include <utility>

namespace {

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

// Negative when the listener was shut down. A call of accept() that waits has already taken a descriptor, and whoever
// counts descriptors would find it missing: so the waiting is poll()'s. The fuzzer's alarm interrupts that.
int nextConnection(int listener)
{
    for (;;) {
        pollfd watched = {listener, POLLIN, 0};
        poll(&watched, 1, -1);
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0 || errno == EINVAL) {
            return connection;
        }
        require(errno == EAGAIN || errno == EINTR || errno == ECONNABORTED, "the playback accepts connections");
    }
}

void replaceAll(std::string& text, const std::string& what, const std::string& with)
{
    for (std::string::size_type at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

testserver::ServerConfig explicitTls(const testserver::Certificate& certificate)
{
    testserver::ServerConfig config;
    config.tls = testserver::TlsMode::Explicit;
    config.certificate = certificate;
    return config;
}

} // namespace

Playback::Playback() : m_certificate(testserver::makeSelfSigned()), m_tls(explicitTls(m_certificate))
{
    std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to clients that have left
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
        {
            Wire wire(connection);
            if (!content.empty() && content.front() == '!') {
                wire.beginTls(m_tls.data.get());
                content.erase(0, 1);
            }
            wire.send(content);
            wire.finish();
            while (wire.hear()) {
            }
        }
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
    Wire wire(connection);
    for (std::string& reply : replies) {
        const bool tls = !reply.empty() && reply.back() == '!';
        reply.resize(reply.size() - (tls ? 1 : 0));
        wire.send(reply);
        if (tls) {
            wire.beginTls(m_tls.control.get());
        }
        if (!wire.hear()) {
            return;
        }
    }
}
