#include "request/Text.h"

#include <algorithm>
#include <cctype>

namespace session {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

bool isControl(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

bool isPlain(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x80 &&
           (std::isalnum(byte) != 0 || std::string_view("-._~").find(character) != std::string_view::npos);
}

void appendCoded(std::string& text, std::string_view sign, char character)
{
    const auto byte = static_cast<unsigned char>(character);
    text.append(sign).append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
}

} // namespace

bool holdsControlByte(std::string_view text) { return std::any_of(text.begin(), text.end(), isControl); }

std::string shown(std::string_view text, const std::string& secret)
{
    std::string visible;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!secret.empty() && text.compare(i, secret.size(), secret) == 0) {
            visible.append("****");
            i += secret.size() - 1;
        } else if (isControl(text[i])) {
            appendCoded(visible, "\\x", text[i]);
        } else {
            visible.append(1, text[i]);
        }
    }
    return visible;
}

std::string shownUrl(const SFtpRequest& request)
{
    std::string_view url = request.remotePath;
    // libcurl takes any number of slashes up to three.
    const std::size_t slashes = url.find(":/");
    const std::size_t host =
        slashes == std::string_view::npos ? 0 : std::min(url.find_first_not_of('/', slashes + 1), url.size());
    const std::size_t at = url.substr(host, url.find('/', host) - host).rfind('@');
    std::string text(url.substr(0, host));
    if (at != std::string_view::npos) {
        text += "****";
        url.remove_prefix(host + at);
    } else {
        url.remove_prefix(host);
    }
    return shown(text, {}) + shown(url, request.password);
}

std::string percentEncoded(std::string_view text)
{
    std::string encoded;
    for (const char character : text) {
        if (isPlain(character)) {
            encoded.append(1, character);
        } else {
            appendCoded(encoded, "%", character);
        }
    }
    return encoded;
}

std::string inHex(std::string_view bytes)
{
    std::string digits;
    for (const char each : bytes) {
        appendCoded(digits, "", each);
    }
    return digits;
}

std::string quoted(const std::string& path)
{
    std::string text = "\"";
    for (const char character : path) {
        if (character == '"' || character == '\\') {
            text.append(1, '\\');
        }
        text.append(1, character);
    }
    return text.append(1, '"');
}

std::string hiddenName(const std::string& name, const std::string& middle)
{
    constexpr std::size_t kLongest = 255;
    std::size_t size = std::min(name.size(), kLongest - middle.size() - 2);
    // Do not cut within a UTF-8 character.
    while (size < name.size() && size > 0 && (static_cast<unsigned char>(name[size]) & 0xc0U) == 0x80U) {
        --size;
    }
    return "." + name.substr(0, size) + "." + middle;
}

} // namespace session
