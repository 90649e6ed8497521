#include "harness/Playback.h"

#include "harness/Wire.h"

#include <csignal>

namespace {

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
    m_control.listen();
    m_data.listen();
    m_controlThread = std::thread([this] { serveControl(); });
    m_dataThread = std::thread([this] { serveData(); });
}

Playback::~Playback()
{
    m_control.stop();
    m_data.stop();
    m_controlThread.join();
    m_dataThread.join();
}

void Playback::load(const std::string& script)
{
    const std::string::size_type content = script.find('^');
    std::string replies = script.substr(0, content);
    replaceAll(replies, "@", std::to_string(dataPort()));
    replaceAll(replies, "#", std::to_string(dataPort() / 256) + "," + std::to_string(dataPort() % 256));

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
    for (int connection = 0; (connection = m_control.accept()) >= 0;) {
        play(connection);
        countEnd();
    }
}

void Playback::serveData()
{
    for (int connection = 0; (connection = m_data.accept()) >= 0;) {
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
