#include "EscapeControlBytes.h"

namespace {

bool isControlByte(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }

// U+0080 to U+009F: terminals obey these as they obey escape sequences.
bool isTwoByteControl(const std::string& text, std::string::size_type at)
{
    if (at + 1 >= text.size() || static_cast<unsigned char>(text[at]) != 0xc2) {
        return false;
    }
    const auto second = static_cast<unsigned char>(text[at + 1]);
    return second >= 0x80 && second <= 0x9f;
}

void appendHex(std::string& escaped, unsigned char byte)
{
    constexpr char kDigits[] = "0123456789abcdef";
    escaped.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
}

void appendEscaped(std::string& escaped, char character)
{
    switch (character) {
    case '\n':
        escaped.append("\\n");
        break;
    case '\r':
        escaped.append("\\r");
        break;
    case '\t':
        escaped.append("\\t");
        break;
    default:
        appendHex(escaped, static_cast<unsigned char>(character));
    }
}

} // namespace

std::string escapeControlBytes(const std::string& text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            escaped.append("\\\\");
        } else if (isControlByte(static_cast<unsigned char>(text[i]))) {
            appendEscaped(escaped, text[i]);
        } else if (isTwoByteControl(text, i)) {
            appendHex(escaped, static_cast<unsigned char>(text[i]));
            appendHex(escaped, static_cast<unsigned char>(text[++i]));
        } else {
            escaped.append(1, text[i]);
        }
    }
    return escaped;
}
