#include "harness/Wire.h"

#include <openssl/err.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

class KeptErrors
{
public:
    KeptErrors() { ERR_set_mark(); }
    ~KeptErrors() { ERR_pop_to_mark(); }
    KeptErrors(const KeptErrors&) = delete;
    KeptErrors& operator=(const KeptErrors&) = delete;
};

} // namespace

Wire::Wire(int descriptor) : m_descriptor(descriptor) {}

Wire::~Wire()
{
    const KeptErrors kept;
    m_tls.reset();
    close(m_descriptor);
}

void Wire::beginTls(SSL_CTX* context)
{
    m_tls.reset(SSL_new(context));
    SSL_set_fd(m_tls.get(), m_descriptor);
    SSL_set_accept_state(m_tls.get());
}

void Wire::send(const std::string& bytes)
{
    if (bytes.empty()) {
        return;
    }
    const KeptErrors kept;
    if (m_tls) {
        SSL_write(m_tls.get(), bytes.data(), static_cast<int>(bytes.size()));
    } else {
        static_cast<void>(::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
    }
}

void Wire::finish()
{
    const KeptErrors kept;
    if (m_tls) {
        SSL_shutdown(m_tls.get());
    }
    shutdown(m_descriptor, SHUT_WR);
}

std::string Wire::hear()
{
    const KeptErrors kept;
    std::string heard;
    std::array<char, 4096> piece = {};
    for (int count = 0; m_isOpen && (count = read(piece.data(), piece.size())) > 0;) {
        heard.append(piece.data(), static_cast<std::size_t>(count));
    }
    return heard;
}

// 0 or less if there is nothing to read now.
int Wire::read(char* into, int size)
{
    if (m_tls) {
        const int count = SSL_read(m_tls.get(), into, size);
        m_isOpen = count > 0 || SSL_get_error(m_tls.get(), count) == SSL_ERROR_WANT_READ;
        return count;
    }
    const ssize_t count = recv(m_descriptor, into, static_cast<std::size_t>(size), MSG_DONTWAIT);
    m_isOpen = count > 0 || (count < 0 && errno == EAGAIN);
    return static_cast<int>(count);
}
