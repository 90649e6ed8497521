#include "base/Checks.h"

#include "base/UsageError.h"

#include <algorithm>

bool isPlainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find_first_of(std::string("/\0", 2)) == name.npos;
}

bool holdsControlByte(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](unsigned char each) { return each < 0x20 || each == 0x7f; });
}

void refuseControlBytes(const std::string& what, const std::string& text)
{
    if (holdsControlByte(text)) {
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
