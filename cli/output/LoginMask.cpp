#include "output/LoginMask.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

namespace {

constexpr char kMask[] = "****";

// What a line begins with when the rest of it is a login.
constexpr const char* kBeginnings[] = {"USER ", "PASS ", "ACCT ", "Authorization: ", "Proxy-Authorization: "};

bool isWordByte(const std::string& line, std::string::size_type at)
{
    return at < line.size() && std::isalnum(static_cast<unsigned char>(line[at])) != 0;
}

void replaceWord(std::string& line, const std::string& word)
{
    std::string::size_type at = word.empty() ? std::string::npos : line.find(word);
    while (at != std::string::npos) {
        if ((at > 0 && isWordByte(line, at - 1)) || isWordByte(line, at + word.size())) {
            at = line.find(word, at + 1);
        } else {
            line.replace(at, word.size(), kMask);
            at = line.find(word, at + sizeof kMask - 1);
        }
    }
}

bool maskArgument(std::string& line)
{
    for (const std::string beginning : kBeginnings) {
        if (strncasecmp(line.c_str(), beginning.c_str(), beginning.size()) == 0) {
            std::fill(line.begin() + static_cast<std::ptrdiff_t>(beginning.size()), line.end(), '\0');
            line.resize(beginning.size());
            line.append(kMask);
            return true;
        }
    }
    return false;
}

// With the byte behind it; 0 where a line has none.
std::string::size_type lengthOfCode(const std::string& line)
{
    constexpr std::string::size_type kDigits = 3;
    const bool hasCode = line.find_first_not_of("0123456789") == kDigits && line.find_first_of(" -") == kDigits;
    return hasCode ? kDigits + 1 : 0;
}

} // namespace

LoginMask::LoginMask(const std::string& user, const std::string& password) : m_user(user), m_password(user, password) {}

std::string LoginMask::masked(curl_infotype type, const std::string& line) const
{
    // A reply's code is none of the server's words: masked, it would say something else where a password is a number.
    const std::string::size_type code = type == CURLINFO_HEADER_IN ? lengthOfCode(line) : 0;
    std::string shown = line.substr(code);
    if (!maskArgument(shown)) {
        shown = m_password.hiddenIn(std::move(shown));
        replaceWord(shown, type == CURLINFO_HEADER_OUT ? std::string() : m_user);
    }
    return line.substr(0, code) + shown;
}
