#ifndef SFTPCLIENT_CLI_DOCTOR_DEADLINE_H
#define SFTPCLIENT_CLI_DOCTOR_DEADLINE_H

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace doctor {

/// A point in time that a wait must not pass.
class Deadline
{
public:
    explicit Deadline(std::chrono::milliseconds fromNow) : m_end(std::chrono::steady_clock::now() + fromNow) {}

    /// Waits until the descriptor is ready for `events`, or has failed; false when that takes too long.
    bool waitFor(int descriptor, short events) const
    {
        pollfd waits = {descriptor, events, 0};
        for (;;) {
            const int ready = poll(&waits, 1, remaining());
            if (ready > 0) {
                return true;
            }
            if (ready == 0 || errno != EINTR) {
                return false;
            }
        }
    }

private:
    int remaining() const
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
    }

    std::chrono::steady_clock::time_point m_end;
};

} // namespace doctor

#endif
