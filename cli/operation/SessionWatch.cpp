#include "operation/SessionWatch.h"

#include <algorithm>

namespace {

// Of a server that never stops talking.
constexpr std::size_t kMostReplies = 1000;

} // namespace

void SessionWatch::traced(curl_infotype type, std::string_view text)
{
    if (type == CURLINFO_DATA_IN || type == CURLINFO_DATA_OUT) {
        m_bytes += static_cast<std::int64_t>(text.size());
    } else if (type == CURLINFO_HEADER_OUT) {
        m_conversation.sent(text);
        m_sent.emplace(text.substr(0, text.find_first_of(" \r\n")));
    } else if (type == CURLINFO_HEADER_IN && m_replies.size() < kMostReplies) {
        m_conversation.received(text);
        m_replies.push_back(m_conversation.last());
    }
    if (m_trace != nullptr) {
        m_trace->write(type, text);
    }
}

void SessionWatch::restart()
{
    m_bytes = 0;
    m_replies.clear();
}

Reply SessionWatch::lastWith(int code) const
{
    const auto found =
        std::find_if(m_replies.rbegin(), m_replies.rend(), [code](const Reply& each) { return each.code == code; });
    if (found != m_replies.rend()) {
        return *found;
    }
    return m_replies.empty() ? Reply() : m_replies.back();
}

bool SessionWatch::hasReplied(const char* command, int code) const
{
    return std::any_of(m_replies.begin(), m_replies.end(),
                       [command, code](const Reply& each) { return each.code == code && each.command == command; });
}
