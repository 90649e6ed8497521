#include "request/KnownHosts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>

namespace session {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kLine = 4092; // libssh2's: the rest of a longer one counts as the next

std::string_view withoutBlanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Each of the names that commas separate.
bool areShort(std::string_view names)
{
    constexpr std::size_t kLongest = 254;
    while (names.size() > kLongest) {
        const std::size_t comma = names.find(',');
        if (comma > kLongest) {
            return false;
        }
        names.remove_prefix(comma + 1);
    }
    return true;
}

// The base64 of 20 bytes, as OpenSSH writes a salt and a hash.
bool isHash(std::string_view text)
{
    constexpr std::size_t kSize = 28;
    constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return text.size() == kSize && text.find_first_not_of(kDigits) == kSize - 1 && text.back() == '=';
}

// "|1|SALT|HASH", or names as they are.
bool areReadable(std::string_view names)
{
    constexpr std::string_view kHashed = "|1|";
    if (names.empty() || names.front() != '|') {
        return areShort(names);
    }
    const std::size_t middle = names.rfind('|');
    return names.substr(0, kHashed.size()) == kHashed && middle > kHashed.size() &&
           isHash(names.substr(kHashed.size(), middle - kHashed.size())) && isHash(names.substr(middle + 1));
}

// As libssh2 sees it: names, and a type with a key.
bool isReadable(std::string_view line)
{
    constexpr std::size_t kShortestKey = 20;
    line = withoutBlanks(line.substr(0, line.find('\n')));
    const std::string_view names = line.substr(0, line.find_first_of(kBlanks));
    const std::string_view key = withoutBlanks(line.substr(names.size()));
    return line.empty() || line.front() == '#' || (key.size() >= kShortestKey && areReadable(names));
}

} // namespace

std::string obstacleIn(const std::string& knownHostsFile)
{
    if (knownHostsFile.empty()) {
        return {};
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(knownHostsFile.c_str(), "re"), std::fclose);
    if (!file && errno == ENOENT) {
        return {};
    }
    std::array<char, kLine> line = {};
    for (int number = 1; file && std::fgets(line.data(), line.size(), file.get()) != nullptr; ++number) {
        if (!isReadable(line.data())) {
            return "line " + std::to_string(number) + " of knownHostsFile cannot be read, nor can what follows it";
        }
    }
    return file && std::feof(file.get()) != 0
               ? ""
               : "knownHostsFile cannot be read: " + std::generic_category().message(errno);
}

} // namespace session
