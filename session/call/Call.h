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

    /// What a server that has been reached owes the call at the moment: each has its limit.
    enum class Awaited
    {
        Nothing, ///< it has not been reached, or is done: libcurl limits that
        Reply,
        Bytes
    };
    void await(Awaited what);
    /// The server is alive: the limit counts from now on.
    void sawSign() { m_lastSign = Clock::now(); }
    Awaited awaited() const { return m_awaited; }

    std::int64_t bytes() const { return m_progress.bytes; }
    Clock::time_point lastSign() const { return m_lastSign; }
    bool hasMoved() const { return m_hasMoved; }
    /// For a file of unknown size.
    void learnTotal(std::int64_t total);

    /// Tells the caller how far it is, if it is time to.
    void report(bool always = false);

    /// Keeps what one of the caller's functions has thrown: libcurl is C, and must not be unwound.
    void keepException() { m_thrown = std::current_exception(); }
    bool hasThrown() const { return m_thrown != nullptr; }
    /// Hands it on. What is done afterwards, to clean up, tells nobody of its progress.
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
