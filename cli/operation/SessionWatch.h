#ifndef SFTPCLIENT_CLI_OPERATION_SESSIONWATCH_H
#define SFTPCLIENT_CLI_OPERATION_SESSIONWATCH_H

#include "base/ServerReplies.h"
#include "operation/TransferSeam.h"
#include "output/Trace.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Reads along in the transfers of one operation on a session: passes on what libcurl says, and knows afterwards what
/// the server replied.
class SessionWatch : public TranscriptObserver
{
public:
    /// `trace`: what to write to, the caller's; null where it is not wanted.
    explicit SessionWatch(Trace* trace) : m_trace(trace) {}

    void transferBegins() override { m_conversation = ServerReplies(); }
    void traced(curl_infotype type, std::string_view text) override;

    /// Forgets what moved, and what was replied: the operation is tried anew.
    void restart();

    /// The bytes of files and listings that have moved.
    std::int64_t bytes() const { return m_bytes; }

    /// The last reply with this code; where there was none, the last of all.
    Reply lastWith(int code) const;

    /// Whether the server has replied to `command` with this code.
    bool hasReplied(const char* command, int code) const;

    /// Whether `command` was sent, by an earlier attempt, too.
    bool hasSent(const char* command) const { return m_sent.count(command) > 0; }

private:
    Trace* m_trace;
    std::int64_t m_bytes = 0;
    ServerReplies m_conversation; // of one transfer
    std::vector<Reply> m_replies; // of all
    std::set<std::string> m_sent; // commands, without what follows them
};

#endif
