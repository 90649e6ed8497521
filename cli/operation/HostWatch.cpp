#include "operation/HostWatch.h"

#include "operation/Interruption.h"

namespace {

constexpr int kTooManyConnections = 421; // libcurl tells it as a time-out, too

std::string inSeconds(std::chrono::seconds time) { return std::to_string(time.count()) + " s"; }

} // namespace

std::chrono::seconds HostWatch::begins()
{
    restart(m_transfers + 1);
    const TransferClock::Time now = std::chrono::steady_clock::now();
    m_clock.begins(now);
    if (m_progress != nullptr) {
        m_progress->start();
    }
    return m_clock.connectingFrom(now);
}

void HostWatch::traced(curl_infotype type, std::string_view text)
{
    m_clock.moves(std::chrono::steady_clock::now());
    // What the server replies to QUIT says nothing about the transfer.
    m_saysGoodbye = m_saysGoodbye || (type == CURLINFO_HEADER_OUT && text.substr(0, 4) == "QUIT");
    if (!m_saysGoodbye && type == CURLINFO_HEADER_OUT) {
        m_replies.sent(text);
    } else if (!m_saysGoodbye && type == CURLINFO_HEADER_IN) {
        m_replies.received(text);
    }
    if (m_trace != nullptr) {
        m_trace->write(type, text);
    }
}

bool HostWatch::goesOn(const TransferAmounts& amounts)
{
    const TransferClock::Time now = std::chrono::steady_clock::now();
    const curl_off_t bytes = amounts.received + amounts.sent;
    if (bytes != m_moved) {
        m_moved = bytes;
        m_clock.moves(now);
    }
    if (m_progress != nullptr && bytes > 0) {
        m_progress->show(bytes, amounts.toReceive + amounts.toSend);
    }
    // What is given up stays so: libcurl may say QUIT all the same, and would wait again.
    if (m_limitReached.empty()) {
        m_limitReached = limitAt(now);
    }
    return m_limitReached.empty() && Interruption::signal() == 0;
}

CURLcode HostWatch::ended(CURLcode result, const TransferAmounts& amounts)
{
    m_lastResult = result;
    m_lastBytes = amounts.received + amounts.sent;
    if (m_progress != nullptr) {
        m_progress->clear();
    }
    if (result == CURLE_ABORTED_BY_CALLBACK && !m_limitReached.empty()) {
        m_lastResult = CURLE_OPERATION_TIMEDOUT;
    } else if (result == CURLE_OPERATION_TIMEDOUT && lastReply().code != kTooManyConnections) {
        m_limitReached = limitOfConnecting(std::chrono::steady_clock::now());
    } else {
        m_limitReached.clear();
    }
    return m_lastResult;
}

std::string HostWatch::limitOfConnecting(TransferClock::Time now) const
{
    if (m_clock.isOver(now)) {
        return limitAt(now);
    }
    const std::string what =
        m_clock.isConnected() ? "the data connection was not made " : "connection and login did not finish ";
    return what + "within " + inSeconds(m_clock.limits().connect) + " (--connect-time)";
}

std::string HostWatch::limitAt(TransferClock::Time now) const
{
    if (m_clock.isOver(now)) {
        return "the operation did not finish within " + inSeconds(m_clock.limits().whole) + " (--max-time)";
    }
    if (m_clock.isStalled(now)) {
        return "no byte was sent or received for " + inSeconds(m_clock.limits().stall) + " (--stall-time)";
    }
    return {};
}

void HostWatch::restart(unsigned transfers)
{
    m_transfers = transfers;
    m_lastResult = CURLE_OK;
    m_lastBytes = 0;
    m_moved = 0;
    m_replies = ServerReplies();
    m_limitReached.clear();
    m_saysGoodbye = false;
}
