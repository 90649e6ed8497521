#include "connection/Replies.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace session {

namespace {

constexpr std::size_t kMostLines = 1000;
constexpr std::size_t kLongestLine = 4096;

bool isDigit(char character) { return std::isdigit(static_cast<unsigned char>(character)) != 0; }

// Three digits and a blank, or three digits alone: the other lines of a reply have a "-" there, or no digits.
bool endsReply(std::string_view line)
{
    return line.size() >= 3 && std::all_of(line.begin(), line.begin() + 3, isDigit) &&
           (line.size() == 3 || line[3] == ' ');
}

} // namespace

bool Replies::add(std::string_view line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    line = line.substr(0, kLongestLine);
    if (m_lines.size() < kMostLines) {
        m_lines.emplace_back(line);
    }
    if (!endsReply(line)) {
        return false;
    }
    ++m_count;
    m_last = line;
    m_lastCode = (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
    m_openData = m_openData || opensData(m_lastCode);
    return true;
}

long long sizeInReply(std::string_view line)
{
    constexpr std::string_view kCode = "213 ";
    long long size = -1;
    if (line.substr(0, kCode.size()) != kCode) {
        return -1;
    }
    const std::string_view digits = line.substr(kCode.size());
    const std::from_chars_result read = std::from_chars(digits.data(), digits.data() + digits.size(), size);
    return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? std::max(size, -1LL) : -1;
}

} // namespace session
