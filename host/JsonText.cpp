#include "JsonText.h"

#include "Utf8.h"

#include <algorithm>

namespace {

constexpr char kReplacement[] = "\xef\xbf\xbd";

// The number of a control character is its last byte.
void appendControl(std::string& json, unsigned char number)
{
    constexpr char kDigits[] = "0123456789abcdef";
    switch (number) {
    case '\n':
        json.append("\\n");
        break;
    case '\r':
        json.append("\\r");
        break;
    case '\t':
        json.append("\\t");
        break;
    default:
        json.append("\\u00").append(1, kDigits[number >> 4U]).append(1, kDigits[number & 0xfU]);
    }
}

void appendCharacter(std::string& json, std::string_view character)
{
    if (isControl(character)) {
        appendControl(json, static_cast<unsigned char>(character.back()));
    } else if (character == "\"" || character == "\\") {
        json.append(1, '\\').append(character);
    } else {
        json.append(character);
    }
}

} // namespace

std::string jsonText(std::string_view text)
{
    std::string json;
    json.reserve(text.size() + 2);
    json.append(1, '"');
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        if (length > 0) {
            appendCharacter(json, text.substr(0, length));
        } else {
            json.append(kReplacement);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return json.append(1, '"');
}
