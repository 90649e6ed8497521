#ifndef SFTPCLIENT_SESSION_CALL_H
#define SFTPCLIENT_SESSION_CALL_H

#include "call/StopSwitch.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace session {

/// One call from beginning to end: its limits, its progress, and what the caller's functions threw.
class Call
{
public:
    using Clock = std::chrono::steady_clock;

    Call(const SessionOptions& options, const StopSwitch& stop);

    /// Why it must end now: 42 or 28; 0 if it may go on.
    CURLcode verdict() const;
    /// The text for that.
    std::string reason() const;

    /// The limit for a transfer that begins now, which libcurl does not end before the call's own is reached; nothing
    /// if the call has none. At least a millisecond, because to libcurl 0 means no limit.
    std::optional<std::chrono::milliseconds> timeLeft() const;

    /// A file of `total` bytes (-1: unknown) begins to move; `done` of them have moved before.
    void beginTransfer(std::int64_t total, std::int64_t done = 0);
    /// More bytes have moved.
    void moved(std::size_t bytes);
    /// All bytes have moved.
    void finishing();

    /// What the server owes the call at the moment; each kind has its own limit.
    enum class Awaited
    {
        Nothing, ///< still connecting, or done: libcurl's own limits apply
        Reply,
        Bytes
    };
    void await(Awaited what);
    /// The server has shown a sign of life: the limit starts anew.
    void sawSign() { m_lastSign = Clock::now(); }
    Awaited awaited() const { return m_awaited; }

    std::int64_t bytes() const { return m_progress.bytes; }
    Clock::time_point lastSign() const { return m_lastSign; }
    bool hasMoved() const { return m_hasMoved; }
    /// For a file of unknown size.
    void learnTotal(std::int64_t total);

    /// Reports the progress to the caller, if a report is due.
    void report(bool always = false);

    /// Keeps what one of the caller's functions has thrown: no exception may pass through libcurl, which is C.
    void keepException() { m_thrown = std::current_exception(); }
    bool hasThrown() const { return m_thrown != nullptr; }
    /// Rethrows it. The clean-up that follows reports no progress.
    void rethrow()
    {
        if (m_thrown) {
            m_silent = true;
            std::rethrow_exception(std::exchange(m_thrown, nullptr));
        }
    }

private:
    bool isStopped() const { return m_stop.isOn() || m_stop.turns() != m_turns; }

    const SessionOptions& m_options;
    const StopSwitch& m_stop;
    const unsigned m_turns;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_lastSign = m_begin;
    Clock::time_point m_nextReport = Clock::now();
    TransferProgress m_progress;
    Awaited m_awaited = Awaited::Nothing;
    bool m_hasMoved = false;
    bool m_silent = false;
    std::exception_ptr m_thrown;
};

} // namespace session

#endif
