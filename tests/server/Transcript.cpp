#include "Transcript.h"

#include <boost/algorithm/string/predicate.hpp>

namespace testserver {

namespace {

std::string readable(const std::string& bytes)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x20 || value == 0x7f) {
            text += {'\\', 'x', kDigits[value >> 4], kDigits[value & 0xf]};
        } else {
            text += byte;
        }
    }
    return text;
}

bool isAlphanumeric(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool hasPassword(const std::string& command)
{
    return boost::algorithm::istarts_with(command, "PASS") && (command.size() == 4 || !isAlphanumeric(command[4]));
}

} // namespace

std::string commandLine(const std::string& command)
{
    return "> " + (hasPassword(command) ? command.substr(0, 4) + " ****" : readable(command));
}

std::vector<std::string> replyLines(const std::string& bytes)
{
    std::vector<std::string> lines;
    std::size_t begin = 0;
    do {
        const std::size_t end = bytes.find('\n', begin);
        std::string line = bytes.substr(begin, end == std::string::npos ? end : end - begin);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back("< " + readable(line));
        begin = end == std::string::npos ? bytes.size() : end + 1;
    } while (begin < bytes.size());
    return lines;
}

} // namespace testserver
