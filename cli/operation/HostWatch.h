#ifndef SFTPCLIENT_CLI_OPERATION_HOSTWATCH_H
#define SFTPCLIENT_CLI_OPERATION_HOSTWATCH_H

#include "base/ServerReplies.h"
#include "operation/TransferClock.h"
#include "operation/TransferSeam.h"
#include "output/Progress.h"
#include "output/Trace.h"

#include <chrono>
#include <cstdint>
#include <string>

/// Watches the transfers of one operation: passes on what libcurl says, shows how far it is, ends it when a signal came
/// or a limit is reached, and knows afterwards how it went.
class HostWatch : public TransferObserver
{
public:
    /// What to write to, each null where it is not wanted. Both stay the caller's. The limit of the whole operation
    /// counts from now on.
    HostWatch(const TimeLimits& limits, Trace* trace, Progress* progress)
        : m_clock(limits, std::chrono::steady_clock::now()), m_trace(trace), m_progress(progress)
    {
    }

    std::chrono::seconds begins() override;
    void connected() override { m_clock.connected(); }
    void traced(curl_infotype type, std::string_view text) override;
    bool goesOn(curl_off_t bytes, curl_off_t total) override;
    CURLcode ended(CURLcode result, curl_off_t bytes) override;

    /// Forgets the transfers so far: the operation is tried anew.
    void restart()
    {
        m_transfers = 0;
        m_last = {};
    }

    /// How many transfers were begun.
    unsigned transfers() const { return m_transfers; }

    /// libcurl's result of the last one.
    CURLcode lastResult() const { return m_last.result; }

    /// The bytes that the last one moved.
    std::int64_t lastBytes() const { return m_last.bytes; }

    /// The server's last reply in the last one, as it came.
    const Reply& lastReply() const { return m_last.replies.last(); }

    /// Which limit ended the last one; empty where none did.
    const std::string& limitReached() const { return m_last.limitReached; }

    /// Whether nothing may follow any more that takes this long.
    bool isOver(std::chrono::milliseconds more) const { return m_clock.isOver(std::chrono::steady_clock::now(), more); }

private:
    struct Transfer
    {
        bool saysGoodbye = false;
        CURLcode result = CURLE_OK;
        std::int64_t bytes = 0;
        std::int64_t moved = 0;
        ServerReplies replies;
        std::string limitReached;
    };

    std::string limitOfConnecting(TransferClock::Time now) const;
    std::string limitAt(TransferClock::Time now) const;

    TransferClock m_clock;
    Trace* m_trace;
    Progress* m_progress;
    unsigned m_transfers = 0;
    Transfer m_last;
};

#endif
