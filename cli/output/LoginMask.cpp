#include "output/LoginMask.h"

#include "PercentCode.h"
#include "credentials/Password.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace {

constexpr char kMask[] = "****";

// What a line begins with when the rest of it is a login.
constexpr const char* kBeginnings[] = {"USER ", "PASS ", "ACCT ", "Authorization: ", "Proxy-Authorization: "};

bool isWordByte(const std::string& line, std::string::size_type at)
{
    return at < line.size() && std::isalnum(static_cast<unsigned char>(line[at])) != 0;
}

void replaceAll(std::string& line, const std::string& text, bool wordsAlone)
{
    if (text.empty()) {
        return;
    }
    std::string::size_type at = line.find(text);
    while (at != std::string::npos) {
        const bool partOfWord = (at > 0 && isWordByte(line, at - 1)) || isWordByte(line, at + text.size());
        if (wordsAlone && partOfWord) {
            at = line.find(text, at + 1);
        } else {
            line.replace(at, text.size(), kMask);
            at = line.find(text, at + sizeof kMask - 1);
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

void wipe(std::string& text) { const WipedAtEnd wiped(text); }

} // namespace

LoginMask::LoginMask(const std::string& user, const std::string& password)
    : m_user(user), m_password(password), m_encodedPassword(percentEncoded(password))
{
}

LoginMask::~LoginMask()
{
    wipe(m_password);
    wipe(m_encodedPassword);
}

std::string LoginMask::masked(curl_infotype type, const std::string& line) const
{
    std::string shown = line;
    if (!maskArgument(shown)) {
        replaceAll(shown, m_password, false);
        replaceAll(shown, m_encodedPassword, false);
        replaceAll(shown, type == CURLINFO_HEADER_OUT ? std::string() : m_user, true);
    }
    return shown;
}
