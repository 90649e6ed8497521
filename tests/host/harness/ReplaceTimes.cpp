#include "harness/ReplaceTimes.h"

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
