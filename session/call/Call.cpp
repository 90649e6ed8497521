#include "call/Call.h"

#include <algorithm>
#include <limits>

namespace session {

namespace {

constexpr std::chrono::milliseconds kBetweenReports(100);
constexpr std::chrono::milliseconds kEarly(1); // by which libcurl, which rounds, may end a transfer before its limit
constexpr std::chrono::milliseconds kLongest(std::numeric_limits<std::int32_t>::max()); // which libcurl takes

std::string inMilliseconds(std::chrono::milliseconds time) { return std::to_string(time.count()) + " ms"; }

bool isOver(std::chrono::milliseconds limit, Call::Clock::duration passed)
{
    return limit.count() > 0 && passed >= limit;
}

} // namespace

Call::Call(const SessionOptions& options, const StopSwitch& stop)
    : m_options(options), m_stop(stop), m_turns(stop.turns())
{
}

CURLcode Call::verdict() const
{
    if (isStopped() || hasThrown()) {
        return CURLE_ABORTED_BY_CALLBACK;
    }
    const Clock::time_point now = Clock::now();
    const bool held = (m_awaited == Awaited::Reply && isOver(m_options.replyTimeout, now - m_lastSign)) ||
                      (m_awaited == Awaited::Bytes && isOver(m_options.stallTimeout, now - m_lastSign));
    return held || isOver(m_options.callTimeout, now - m_begin) ? CURLE_OPERATION_TIMEDOUT : CURLE_OK;
}

std::string Call::reason() const
{
    if (isStopped()) {
        return "Cancel() was called";
    }
    if (isOver(m_options.callTimeout, Clock::now() - m_begin)) {
        return "the call took longer than callTimeout, " + inMilliseconds(m_options.callTimeout);
    }
    return m_awaited == Awaited::Reply ? "no reply for replyTimeout, " + inMilliseconds(m_options.replyTimeout)
                                       : "no byte moved for stallTimeout, " + inMilliseconds(m_options.stallTimeout);
}

std::optional<std::chrono::milliseconds> Call::timeLeft() const
{
    if (m_options.callTimeout.count() == 0) {
        return std::nullopt;
    }
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_begin);
    return std::clamp(m_options.callTimeout - passed + kEarly, kEarly, kLongest);
}

void Call::beginTransfer(std::int64_t total, std::int64_t done)
{
    m_progress = {done, total, TransferPhase::Connecting};
    m_nextReport = Clock::now();
}

void Call::learnTotal(std::int64_t total)
{
    if (m_progress.total < 0) {
        m_progress.total = total;
    }
}

void Call::moved(std::size_t bytes)
{
    m_progress.bytes += static_cast<std::int64_t>(bytes);
    m_progress.phase = TransferPhase::Transferring;
    sawSign();
    m_hasMoved = true;
}

void Call::finishing() { m_progress.phase = TransferPhase::Finishing; }

void Call::await(Awaited what)
{
    m_awaited = what;
    sawSign();
}

void Call::report(bool always)
{
    const Clock::time_point now = Clock::now();
    if (!m_options.progress || m_silent || (!always && now < m_nextReport)) {
        return;
    }
    m_nextReport = now + kBetweenReports;
    m_options.progress(m_progress);
    m_lastSign += Clock::now() - now; // the caller's time is not the server's
}

} // namespace session
