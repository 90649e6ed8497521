#include "connection/Pace.h"

#include <algorithm>
#include <chrono>

namespace session {

std::size_t Pace::most(std::size_t count) const
{
    return static_cast<std::size_t>(std::clamp(m_rate / 2, 1.0, std::max(static_cast<double>(count), 1.0)));
}

// Bytes that a pause has delayed are not caught up with, but for what waiting too long by a moment costs.
Call::Clock::time_point Pace::after(std::size_t count)
{
    constexpr std::chrono::milliseconds kMoment(100);
    constexpr std::chrono::hours kLongest(24 * 365);
    const Call::Clock::time_point now = Call::Clock::now();
    const std::chrono::duration<double> time(static_cast<double>(count) / m_rate);
    const Call::Clock::time_point from = m_next ? std::max(*m_next, now - kMoment) : now;
    m_next = from + (time < kLongest ? std::chrono::duration_cast<Call::Clock::duration>(time) : kLongest);
    return *m_next;
}

} // namespace session
