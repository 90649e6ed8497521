#include "doctor/Conversation.h"

#include "doctor/Transcript.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <new>

namespace doctor {

namespace {

// What a server says without end is not read further.
constexpr std::string::size_type kLongestLine = 4096;
constexpr int kMostLines = 1000;

// http, because libcurl would log in on a connection of any other scheme that knows a host and a port.
std::string urlOf(const Access& access)
{
    const bool ipv6 = access.host.find(':') != std::string::npos;
    return "http://" + (ipv6 ? "[" + access.host + "]" : access.host);
}

bool isAddress(const std::string& host)
{
    std::array<unsigned char, sizeof(in6_addr)> bytes = {};
    return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 || inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

} // namespace

Conversation::Conversation(const Access& access) : m_access(access), m_handle(curl_easy_init(), curl_easy_cleanup)
{
    if (!m_handle) {
        throw std::bad_alloc();
    }
    curl_easy_setopt(m_handle.get(), CURLOPT_URL, urlOf(access).c_str());
    curl_easy_setopt(m_handle.get(), CURLOPT_PORT, static_cast<long>(access.request.port));
    curl_easy_setopt(m_handle.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(m_handle.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(m_handle.get(), CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(access.limit.count()));
    curl_easy_setopt(m_handle.get(), CURLOPT_NOSIGNAL, 1L);
    m_code = curl_easy_perform(m_handle.get());
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (m_code == CURLE_OK && curl_easy_getinfo(m_handle.get(), CURLINFO_ACTIVESOCKET, &socket) == CURLE_OK) {
        m_socket = socket;
    }
}

std::string Conversation::address() const
{
    const char* address = nullptr;
    curl_easy_getinfo(m_handle.get(), CURLINFO_PRIMARY_IP, &address);
    return address == nullptr ? "" : address;
}

// Waits for what TLS, or where there is none a plain read, needs before it can go on.
Conversation::Step Conversation::wait(const Deadline& deadline, int tlsResult) const
{
    short events = POLLIN;
    if (m_tls) {
        const int wanted = SSL_get_error(m_tls.get(), tlsResult);
        if (wanted != SSL_ERROR_WANT_READ && wanted != SSL_ERROR_WANT_WRITE) {
            return Step::Failed;
        }
        events = wanted == SSL_ERROR_WANT_WRITE ? POLLOUT : POLLIN;
    }
    return deadline.waitFor(m_socket, events) ? Step::Done : Step::Late;
}

Conversation::Step Conversation::read(const Deadline& deadline, char& byte)
{
    for (;;) {
        ERR_clear_error();
        const auto got = m_tls ? SSL_read(m_tls.get(), &byte, 1) : recv(m_socket, &byte, 1, MSG_DONTWAIT);
        if (got == 1) {
            return Step::Done;
        }
        if (!m_tls && (got == 0 || (errno != EAGAIN && errno != EINTR))) {
            return Step::Failed;
        }
        const Step waited = wait(deadline, static_cast<int>(got));
        if (waited != Step::Done) {
            return waited;
        }
    }
}

// A command is far shorter than what a connection takes at once.
Conversation::Step Conversation::write(const std::string& bytes)
{
    ERR_clear_error();
    const auto sent = m_tls ? SSL_write(m_tls.get(), bytes.data(), static_cast<int>(bytes.size()))
                            : send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return sent == static_cast<ssize_t>(bytes.size()) ? Step::Done : Step::Failed;
}

Ending Conversation::readLine(const Deadline& deadline, std::string& line)
{
    line.clear();
    while (line.size() < kLongestLine) {
        char byte = '\0';
        const Step step = read(deadline, byte);
        if (step != Step::Done) {
            return step == Step::Late ? Ending::Silent : Ending::Closed;
        }
        if (byte == '\n') {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            return Ending::Complete;
        }
        line += byte;
    }
    return Ending::Garbled;
}

Reply Conversation::hear()
{
    const Deadline deadline(m_access.limit);
    std::string line;
    std::string first;
    for (int count = 0; count < kMostLines; ++count) {
        const Ending ending = readLine(deadline, line);
        if (ending != Ending::Complete) {
            // What came before says what kind of server this is.
            return {ending, 0, ServerText(first.empty() ? line : first, m_access.mask)};
        }
        if (m_access.scheme == Scheme::Sftp ? line.compare(0, 4, "SSH-") == 0 : endsReply(line)) {
            return m_access.scheme == Scheme::Sftp ? Reply{Ending::Complete, 0, ServerText(line, m_access.mask)}
                                                   : replyOf(line, m_access.mask);
        }
        if (first.empty()) {
            first = line;
        }
    }
    return {Ending::Garbled, 0, ServerText(first, m_access.mask)};
}

Reply Conversation::ask(const std::string& command)
{
    if (write(command + "\r\n") != Step::Done) {
        return {Ending::Closed, 0, {}};
    }
    return hear();
}

Ending Conversation::startTls(SSL_CTX* context)
{
    m_tls.reset(SSL_new(context));
    if (!m_tls || SSL_set_fd(m_tls.get(), m_socket) != 1) {
        throw std::bad_alloc();
    }
    if (!isAddress(m_access.host)) {
        SSL_set_tlsext_host_name(m_tls.get(), m_access.host.c_str());
    }
    const Deadline deadline(m_access.limit);
    for (;;) {
        ERR_clear_error();
        const int result = SSL_connect(m_tls.get());
        if (result == 1) {
            m_encrypted = true;
            return Ending::Complete;
        }
        const Step waited = wait(deadline, result);
        if (waited == Step::Late) {
            m_failure = "the server does not answer";
            return Ending::Silent;
        }
        if (waited == Step::Failed) {
            const char* const reason = ERR_reason_error_string(ERR_peek_error());
            m_failure = reason != nullptr ? reason : "the server closes the connection";
            return Ending::Closed;
        }
    }
}

} // namespace doctor
