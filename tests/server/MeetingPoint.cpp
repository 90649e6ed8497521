#include "MeetingPoint.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace testserver {

/// Those who wait for the same others. Its beginning is a descriptor's event, so that one wait can watch for it and
/// for a client that leaves.
class MeetingPoint::Meeting
{
public:
    Meeting() : m_begun(::eventfd(0, EFD_CLOEXEC))
    {
        if (m_begun < 0) {
            throw std::system_error(errno, std::generic_category(), "No descriptor for a meeting can be had");
        }
    }
    ~Meeting() { ::close(m_begun); }
    Meeting(const Meeting&) = delete;
    Meeting& operator=(const Meeting&) = delete;

    void begin() const { ::eventfd_write(m_begun, 1); }

    /// Waits until it has begun; false when the client has left before.
    bool wait(int control) const
    {
        std::array<pollfd, 2> watched = {{{m_begun, POLLIN, 0}, {control, POLLRDHUP, 0}}};
        while (::poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
        }
        return (watched[0].revents & POLLIN) != 0;
    }

    std::uint64_t present = 0; // under the meeting point's mutex

private:
    const int m_begun;
};

bool MeetingPoint::wait(std::uint64_t sessions, int control)
{
    std::shared_ptr<Meeting> meeting;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_next) {
            m_next = std::make_shared<Meeting>();
        }
        meeting = m_next;
        if (++meeting->present >= sessions) {
            meeting->begin();
            m_next.reset();
        }
    }
    if (meeting->wait(control)) {
        return true;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    --meeting->present;
    return false;
}

} // namespace testserver
