#ifndef SFTPCLIENT_CLI_OPERATION_TRANSFERCLOCK_H
#define SFTPCLIENT_CLI_OPERATION_TRANSFERCLOCK_H

#include "base/Arguments.h"

#include <algorithm>
#include <chrono>
#include <string>

/// How long an operation may take.
struct TimeLimits
{
    std::chrono::seconds connect{20}; // until the login of each connection is done
    std::chrono::seconds stall{60};   // without a byte in either direction
    std::chrono::seconds whole{0};    // with everything that belongs to it; 0: no limit

    // Which one was reached.
    std::string wholeText() const { return "the operation did not finish within " + text(whole) + " (--max-time)"; }
    std::string stallText() const { return "no byte was sent or received for " + text(stall) + " (--stall-time)"; }
    std::string connectText(bool isConnected) const
    {
        return (isConnected ? "the data connection was not made " : "connection and login did not finish ") +
               ("within " + text(connect)) + " (--connect-time)";
    }

private:
    static std::string text(std::chrono::seconds time) { return std::to_string(time.count()) + " s"; }
};

inline TimeLimits limitsOf(const Arguments& arguments)
{
    return {arguments.connectTime, arguments.stallTime, arguments.maxTime};
}

/// Measures one operation, whose transfers follow one another, against its limits.
class TransferClock
{
public:
    using Time = std::chrono::steady_clock::time_point;

    TransferClock(const TimeLimits& limits, Time begin) : m_limits(limits), m_begin(begin), m_lastSign(begin) {}

    /// A transfer begins.
    void begins(Time now)
    {
        m_lastSign = now;
        m_connected = false;
    }

    /// Something came or went.
    void moves(Time now) { m_lastSign = now; }

    /// Connection and login are done.
    void connected() { m_connected = true; }

    bool isConnected() const { return m_connected; }

    bool isStalled(Time now) const { return now - m_lastSign >= m_limits.stall; }

    /// Whether nothing may follow any more that takes this long.
    bool isOver(Time now, std::chrono::milliseconds more = {}) const
    {
        return m_limits.whole.count() > 0 && now - m_begin + more >= m_limits.whole;
    }

    /// How much of the limit of the whole operation is left. REQUIRES: there is one.
    Time::duration leftAt(Time now) const { return m_begin + m_limits.whole - now; }

    /// How long a connection that is begun now may take: nothing else ends a TLS handshake. Rounded up, and never 0.
    std::chrono::seconds connectingFrom(Time now) const
    {
        const auto left = std::chrono::ceil<std::chrono::seconds>(leftAt(now));
        const bool isLimited = m_limits.whole.count() > 0;
        return isLimited ? std::min(m_limits.connect, std::max(left, std::chrono::seconds(1))) : m_limits.connect;
    }

    const TimeLimits& limits() const { return m_limits; }

private:
    TimeLimits m_limits;
    Time m_begin;
    Time m_lastSign;
    bool m_connected = false;
};

#endif
