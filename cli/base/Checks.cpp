#include "base/Checks.h"

#include "base/UsageError.h"

#include <algorithm>

void refuseControlBytes(const std::string& what, const std::string& text)
{
    const bool holdsOne = std::any_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte < 0x20 || byte == 0x7f;
    });
    if (holdsOne) {
        throw UsageError(what + " must not hold a control byte (a line break, a tab, ...).");
    }
}

void refuseAllButAName(const std::string& what, const std::string& text)
{
    refuseControlBytes(what, text);
    if (text.empty()) {
        throw UsageError(what + " must not be empty.");
    }
}

void refuseAllButOneWord(const std::string& what, const std::string& text)
{
    refuseControlBytes(what, text);
    if (text.empty() || text.find(' ') != std::string::npos) {
        throw UsageError(what + " must not be empty or hold a blank: the server's command is split there.");
    }
}
