#include "base/ServerReplies.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

constexpr std::size_t kLongestText = 1000;
constexpr std::size_t kCodeSize = 3;
constexpr char kForProxy[] = "CONNECT ";
constexpr int kFinal = 200; // what is below it announces another reply to the same command

std::string_view takeLine(std::string_view& lines)
{
    const std::size_t end = lines.find('\n');
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    return line.substr(0, line.find_last_not_of('\r') + 1);
}

bool hasCode(std::string_view line) { return line.size() > kCodeSize && beginsWithCode(line); }

// As libcurl sees it.
bool endsReply(std::string_view line) { return hasCode(line) && line[kCodeSize] == ' '; }

std::string_view textOf(std::string_view line)
{
    if (endsReply(line) || (hasCode(line) && line[kCodeSize] == '-')) {
        line.remove_prefix(kCodeSize + 1);
    }
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

} // namespace

bool beginsWithCode(std::string_view line)
{
    return line.size() >= kCodeSize && std::all_of(line.begin(), line.begin() + kCodeSize,
                                                   [](unsigned char each) { return std::isdigit(each) != 0; });
}

std::string_view replyQuotedIn(std::string_view text)
{
    constexpr std::string_view kMark = "(the server's last reply: ";
    const std::size_t mark = text.find(kMark);
    return mark == std::string_view::npos ? std::string_view() : text.substr(mark + kMark.size());
}

int codeQuotedIn(std::string_view text)
{
    const std::string_view reply = replyQuotedIn(text);
    int code = 0;
    std::from_chars(reply.data(), reply.data() + reply.size(), code);
    return code;
}

void ServerReplies::sent(std::string_view lines)
{
    m_isProxyAsked = lines.substr(0, sizeof kForProxy - 1) == kForProxy;
    while (!lines.empty() && !m_isProxyAsked) {
        const std::string_view line = takeLine(lines);
        m_unanswered.emplace_back(line.substr(0, line.find(' ')));
    }
}

void ServerReplies::received(std::string_view lines)
{
    while (!lines.empty()) {
        const std::string_view line = takeLine(lines);
        if (m_isProxyAsked) {
            m_isProxyAsked = !line.empty(); // the end of its answer
            continue;
        }
        addText(textOf(line));
        if (endsReply(line)) {
            end(std::stoi(std::string(line.substr(0, kCodeSize))));
        }
    }
}

void ServerReplies::addText(std::string_view text)
{
    if (!text.empty()) {
        m_current.text.append(m_current.text.empty() ? "" : " ").append(text);
        m_current.text.resize(std::min(m_current.text.size(), kLongestText));
    }
}

void ServerReplies::end(int code)
{
    m_current.code = code;
    if (!m_unanswered.empty()) {
        m_current.command = m_unanswered.front();
        if (code >= kFinal) {
            m_unanswered.pop_front();
        }
    }
    m_last = m_current;
    m_current = Reply();
}
