#include "DescriptorSink.h"

#include <poll.h>
#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>
#include <system_error>

namespace {

// A write to a pipe without a reader sends SIGPIPE to the writing thread, which would end the host.
class WithoutSigpipe
{
public:
    WithoutSigpipe()
    {
        sigemptyset(&m_signal);
        sigaddset(&m_signal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    ~WithoutSigpipe() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    WithoutSigpipe(const WithoutSigpipe&) = delete;
    WithoutSigpipe& operator=(const WithoutSigpipe&) = delete;

    // One that waits because the host itself blocks the signal is the host's.
    void discard() const
    {
        const timespec atOnce = {};
        while (sigismember(&m_before, SIGPIPE) == 0 && sigtimedwait(&m_signal, nullptr, &atOnce) < 0 &&
               errno == EINTR) {
        }
    }

private:
    sigset_t m_signal = {};
    sigset_t m_before = {};
};

bool waitsForRoom(int descriptor)
{
    pollfd room = {descriptor, POLLOUT, 0};
    return poll(&room, 1, -1) >= 0 || errno == EINTR;
}

bool mayTryAgain(int error, int descriptor)
{
    return error == EINTR || ((error == EAGAIN || error == EWOULDBLOCK) && waitsForRoom(descriptor));
}

} // namespace

void DescriptorSink::setDescriptor(int descriptor)
{
    m_descriptor = descriptor;
    m_torn = false;
}

void DescriptorSink::write(std::string_view line)
{
    if (m_torn) {
        writeAll("\n");
        m_torn = false;
    }
    writeAll(line);
}

void DescriptorSink::writeAll(std::string_view text)
{
    const std::size_t whole = text.size();
    const WithoutSigpipe withoutSigpipe;
    while (!text.empty()) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        const int error = errno;
        if (mayTryAgain(error, m_descriptor)) {
            continue;
        }
        if (error == EPIPE) {
            withoutSigpipe.discard();
        }
        m_torn = m_torn || text.size() < whole;
        throw std::system_error(error, std::generic_category(), "descriptor " + std::to_string(m_descriptor));
    }
}
