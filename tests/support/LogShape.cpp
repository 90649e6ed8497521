#include "support/LogShape.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

namespace {

// A 0 stands for any digit, the "+" for a "-" as well.
constexpr char kTimeShape[] = "0000-00-00T00:00:00.000+00:00";
constexpr std::size_t kTimeLength = sizeof kTimeShape - 1;
constexpr char kJsonBegin[] = "{\"time\":\"";

bool fits(char character, char shape)
{
    if (shape == '0') {
        return character >= '0' && character <= '9';
    }
    return character == shape || (shape == '+' && character == '-');
}

std::string replaceTime(std::string line)
{
    const std::string json = kJsonBegin;
    const bool isJson = line.compare(0, json.size(), json) == 0;
    const std::size_t at = isJson ? json.size() : 0;
    const std::string time = line.substr(at, kTimeLength + 1);
    const std::string shape = std::string(kTimeShape) + (isJson ? '"' : ' ');
    if (std::equal(time.begin(), time.end(), shape.begin(), shape.end(), fits)) {
        line.replace(at, kTimeLength, "TIME");
    }
    return line;
}

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// "f():12 " or "f:12 " in text, "\"line\":12," in JSON; other numbers follow a colon too.
bool isLineNumber(const std::string& before, char after)
{
    const char last = before.size() < 2 ? '\0' : before[before.size() - 2];
    const bool afterFunction = last == ')' || (last >= 'a' && last <= 'z');
    return endsWith(before, "\"line\":") || (after == ' ' && endsWith(before, ":") && afterFunction);
}

} // namespace

std::string replaceTimes(const std::string& log)
{
    std::string replaced;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        replaced.append(replaceTime(line));
        replaced.append(lines.eof() ? "" : "\n");
    }
    return replaced;
}

std::string replaceLines(const std::string& log)
{
    constexpr char kDigits[] = "0123456789";
    std::string replaced;
    for (std::size_t at = 0; at < log.size();) {
        const std::size_t number = std::min(log.find_first_of(kDigits, at), log.size());
        const std::size_t end = std::min(log.find_first_not_of(kDigits, number), log.size());
        replaced.append(log, at, number - at);
        if (number < end && end < log.size() && isLineNumber(replaced, log[end])) {
            replaced.append("LINE");
        } else {
            replaced.append(log, number, end - number);
        }
        at = end;
    }
    return replaced;
}
