#include "DescriptorSink.h"

#include "WithoutWriteSignals.h"

#include <poll.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace {

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
    const WithoutWriteSignals withoutSignals;
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
        withoutSignals.discard(error);
        m_torn = m_torn || text.size() < whole;
        throw std::system_error(error, std::generic_category(), "descriptor " + std::to_string(m_descriptor));
    }
}
