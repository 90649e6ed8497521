#include "base/ServerReplies.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr std::size_t kLongestText = 1000;
constexpr std::size_t kCodeSize = 3;
constexpr int kFinal = 200; // what is below it announces another reply to the same command

std::string_view takeLine(std::string_view& lines)
{
    const std::size_t end = lines.find('\n');
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    return line.substr(0, line.find_last_not_of('\r') + 1);
}

bool hasCode(std::string_view line)
{
    return line.size() > kCodeSize && std::all_of(line.begin(), line.begin() + kCodeSize,
                                                  [](unsigned char each) { return std::isdigit(each) != 0; });
}

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

void ServerReplies::sent(std::string_view lines)
{
    while (!lines.empty()) {
        const std::string_view line = takeLine(lines);
        m_unanswered.emplace_back(line.substr(0, line.find(' ')));
    }
}

void ServerReplies::received(std::string_view lines)
{
    while (!lines.empty()) {
        const std::string_view line = takeLine(lines);
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
