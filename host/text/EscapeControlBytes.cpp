#include "EscapeControlBytes.h"

#include "Utf8.h"

#include <algorithm>

namespace {

void appendEscaped(std::string& escaped, char byte)
{
    constexpr char kDigits[] = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    switch (byte) {
    case '\n':
        escaped.append("\\n");
        break;
    case '\r':
        escaped.append("\\r");
        break;
    case '\t':
        escaped.append("\\t");
        break;
    case '\\':
        escaped.append("\\\\");
        break;
    default:
        escaped.append("\\x").append(1, kDigits[value >> 4U]).append(1, kDigits[value & 0xfU]);
    }
}

} // namespace

std::string escapeControlBytes(std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && !isControl(character) && character != "\\") {
            escaped.append(character);
        } else {
            for (const char byte : character) {
                appendEscaped(escaped, byte);
            }
        }
        text.remove_prefix(character.size());
    }
    return escaped;
}
