#include "base/PercentCode.h"

#include "base/UsageError.h"

#include <charconv>
#include <cstring>

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";
constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

char byteAt(const std::string& text, std::string::size_type percent)
{
    const std::string digits = text.substr(percent + 1, 2);
    unsigned byte = 0;
    const std::from_chars_result read = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || read.ec != std::errc() || read.ptr != digits.data() + digits.size()) {
        throw UsageError("URL must hold two hexadecimal digits after each \"%\": write %25 for a \"%\" itself.");
    }
    return static_cast<char>(byte);
}

} // namespace

std::string percentDecoded(const std::string& text)
{
    std::string decoded;
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            decoded.append(1, byteAt(text, i));
            i += 2;
        } else {
            decoded.append(1, text[i]);
        }
    }
    return decoded;
}

std::string percentEncoded(const std::string& text)
{
    std::string encoded;
    // All of it first: the text may be a password, which a growing string would leave behind in its old blocks.
    encoded.reserve(3 * text.size());
    for (const char character : text) {
        if (character != '\0' && std::strchr(kPlain, character) != nullptr) {
            encoded.append(1, character);
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded.append(1, '%').append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
        }
    }
    return encoded;
}
