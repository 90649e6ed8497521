#include "LogRecord.h"

#include "EscapeControlBytes.h"
#include "JsonText.h"

#include <nlohmann/json.hpp>

namespace {

// Escaped it becomes up to six times as long, and it is all in memory then.
constexpr std::size_t kLongestText = 65536;

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U; }

// The text, or the beginning of a long one and how much is missing; it does not end amid a UTF-8 character.
std::string bounded(std::string_view text)
{
    if (text.size() <= kLongestText) {
        return std::string(text);
    }
    constexpr std::size_t kLongestCharacter = 4;
    std::size_t kept = kLongestText;
    while (kept > kLongestText - kLongestCharacter && continuesCharacter(text[kept])) {
        --kept;
    }
    return std::string(text.substr(0, kept)) + " [" + std::to_string(text.size() - kept) + " bytes left out]";
}

} // namespace

std::string asText(const LogRecord& record)
{
    return escapeControlBytes(bounded(record.module)) + " request=" + std::to_string(record.requestId) + " " +
           escapeControlBytes(bounded(record.function)) + ":" + std::to_string(record.line) + " " +
           escapeControlBytes(bounded(record.text));
}

// Put together here: a JSON library's object takes memory to be destroyed, and ends the host where there is none.
std::string asJson(const LogRecord& record)
{
    return "\"module\":" + jsonText(bounded(record.module)) + ",\"request\":" + std::to_string(record.requestId) +
           ",\"function\":" + jsonText(bounded(record.function)) + ",\"line\":" + std::to_string(record.line) +
           ",\"text\":" + jsonText(bounded(record.text));
}
