#include "operation/HostWatch.h"

#include "operation/Interruption.h"

namespace {

constexpr int kTooManyConnections = 421; // libcurl tells it as a time-out, too

} // namespace

std::chrono::seconds HostWatch::begins()
{
    ++m_transfers;
    m_last = {};
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
    m_last.saysGoodbye = m_last.saysGoodbye || (type == CURLINFO_HEADER_OUT && text.substr(0, 4) == "QUIT");
    if (!m_last.saysGoodbye && type == CURLINFO_HEADER_OUT) {
        m_last.replies.sent(text);
    } else if (!m_last.saysGoodbye && type == CURLINFO_HEADER_IN) {
        m_last.replies.received(text);
    }
    if (m_trace != nullptr) {
        m_trace->write(type, text);
    }
}

bool HostWatch::goesOn(curl_off_t bytes, curl_off_t total)
{
    const TransferClock::Time now = std::chrono::steady_clock::now();
    if (bytes != m_last.moved) {
        m_last.moved = bytes;
        m_clock.moves(now);
    }
    if (m_progress != nullptr && bytes > 0) {
        m_progress->show(bytes, total);
    }
    // What is given up stays so: libcurl may say QUIT all the same, and would wait again.
    if (m_last.limitReached.empty()) {
        m_last.limitReached = limitAt(now);
    }
    return m_last.limitReached.empty() && Interruption::signal() == 0;
}

CURLcode HostWatch::ended(CURLcode result, curl_off_t bytes)
{
    m_last.result = result;
    m_last.bytes = bytes;
    if (m_progress != nullptr) {
        m_progress->clear();
    }
    if (result == CURLE_ABORTED_BY_CALLBACK && !m_last.limitReached.empty()) {
        m_last.result = CURLE_OPERATION_TIMEDOUT;
    } else if (result == CURLE_OPERATION_TIMEDOUT && lastReply().code != kTooManyConnections) {
        m_last.limitReached = limitOfConnecting(std::chrono::steady_clock::now());
    } else {
        m_last.limitReached.clear();
    }
    return m_last.result;
}

// libcurl, which rounds, may end a connection a millisecond before its limit.
std::string HostWatch::limitOfConnecting(TransferClock::Time now) const
{
    constexpr std::chrono::milliseconds kEarly(1);
    return m_clock.isOver(now, kEarly) ? m_clock.limits().wholeText()
                                       : m_clock.limits().connectText(m_clock.isConnected());
}

std::string HostWatch::limitAt(TransferClock::Time now) const
{
    if (m_clock.isOver(now)) {
        return m_clock.limits().wholeText();
    }
    return m_clock.isStalled(now) ? m_clock.limits().stallText() : std::string();
}
