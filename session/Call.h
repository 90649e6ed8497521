#ifndef SFTPCLIENT_SESSION_CALL_H
#define SFTPCLIENT_SESSION_CALL_H

#include "StopSwitch.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>

namespace session {

/// One call from its beginning to its end: its limits, how far it is, and what the caller's functions threw.
class Call
{
public:
    using Clock = std::chrono::steady_clock;

    Call(const SessionOptions& options, const StopSwitch& stop);

    /// Why it must end now: 42 or 28; 0 while it may go on.
    CURLcode verdict() const;
    /// The sentence about that.
    std::string reason() const;

    /// What is left of the call's own limit; nothing where it has none. Never less than a millisecond, because 0 would
    /// mean no limit to libcurl.
    std::optional<std::chrono::milliseconds> timeLeft() const;

    /// A file of so many bytes, -1 for unknown, begins to move; `done` of them have moved before.
    void beginTransfer(std::int64_t total, std::int64_t done = 0);
    /// Bytes have moved.
    void moved(std::size_t bytes);
    /// All have.
    void finishing();
    /// It is over, well or not.
    void endTransfer();

    std::int64_t bytes() const { return m_progress.bytes; }
    bool hasMoved() const { return m_hasMoved; }
    void setTotal(std::int64_t total);

    /// Tells the caller how far it is, if it is time to.
    void report(bool always = false);

    /// Keeps what one of the caller's functions has thrown: libcurl is C, and must not be unwound.
    void keepException() { m_thrown = std::current_exception(); }
    bool hasThrown() const { return m_thrown != nullptr; }
    void rethrow() const
    {
        if (m_thrown) {
            std::rethrow_exception(m_thrown);
        }
    }

private:
    const SessionOptions& m_options;
    const StopSwitch& m_stop;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_lastByte = Clock::now();
    Clock::time_point m_nextReport = Clock::now();
    TransferProgress m_progress;
    bool m_moving = false;
    bool m_hasMoved = false;
    std::exception_ptr m_thrown;
};

} // namespace session

#endif
