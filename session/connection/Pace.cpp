#include "connection/Pace.h"

#include <chrono>

namespace session {

Call::Clock::time_point Pace::after(std::size_t count)
{
    if (m_moved == 0) {
        m_begin = Call::Clock::now();
    }
    m_moved += static_cast<double>(count);
    const std::chrono::duration<double> time(m_moved / m_rate);
    constexpr std::chrono::hours kLongest(24 * 365);
    return m_begin + (time < kLongest ? std::chrono::duration_cast<Call::Clock::duration>(time) : kLongest);
}

} // namespace session
