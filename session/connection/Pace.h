#ifndef SFTPCLIENT_SESSION_PACE_H
#define SFTPCLIENT_SESSION_PACE_H

#include "call/Call.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace session {

/// Keeps bytes to a rate. libcurl looks at its own limits only between rounds: one takes up to a hundred buffers, of a
/// small file all bytes.
class Pace
{
public:
    /// REQUIRES: `bytesPerSecond` is at least 1.
    explicit Pace(std::uint64_t bytesPerSecond) : m_rate(static_cast<double>(bytesPerSecond)) {}

    /// How many of `count` bytes may move at once, so that they do not wait for long: half a second's worth.
    std::size_t most(std::size_t count) const;

    /// When more may move than the bytes so far and `count`.
    Call::Clock::time_point after(std::size_t count);

private:
    double m_rate;
    std::optional<Call::Clock::time_point> m_next;
};

} // namespace session

#endif
