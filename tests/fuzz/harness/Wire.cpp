#include "harness/Wire.h"

#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>

namespace {

// A client that waits for the rest of a reply is not kept waiting for long.
constexpr int kSilence = 5;
// Nor does a handshake that the client has not begun last long, but one that it has begun gets the time it needs.
constexpr timeval kHandshakeSilence = {0, 100000};

} // namespace

Wire::Wire(int descriptor) : m_descriptor(descriptor)
{
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &kHandshakeSilence, sizeof kHandshakeSilence);
}

Wire::~Wire()
{
    m_tls.reset();
    ERR_clear_error();
    close(m_descriptor);
}

void Wire::beginTls(SSL_CTX* context)
{
    m_tls.reset(SSL_new(context));
    SSL_set_fd(m_tls.get(), m_descriptor);
    SSL_accept(m_tls.get());
}

void Wire::send(const std::string& bytes)
{
    if (bytes.empty()) {
        return;
    }
    if (m_tls) {
        SSL_write(m_tls.get(), bytes.data(), static_cast<int>(bytes.size()));
    } else {
        static_cast<void>(::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL));
    }
}

void Wire::finish()
{
    if (m_tls) {
        SSL_shutdown(m_tls.get());
    }
    shutdown(m_descriptor, SHUT_WR);
}

bool Wire::hear()
{
    if (!readable()) {
        return true;
    }
    std::array<char, 4096> heard = {};
    if (m_tls) {
        return SSL_read(m_tls.get(), heard.data(), heard.size()) > 0;
    }
    return recv(m_descriptor, heard.data(), heard.size(), 0) > 0;
}

bool Wire::readable() const
{
    pollfd watched = {m_descriptor, POLLIN, 0};
    return (m_tls && SSL_pending(m_tls.get()) > 0) || poll(&watched, 1, kSilence) > 0;
}
