#include "RecordText.h"

#include "EscapeControlBytes.h"

namespace {

std::string withoutLeadingZero(const std::string& text)
{
    return !text.empty() && text.front() == '0' ? text.substr(1) : text;
}

} // namespace

std::string recordText(const std::string& module, unsigned long requestId, const std::string& function,
                       unsigned int line, const std::string& text)
{
    return escapeControlBytes(module) + " request=" + std::to_string(requestId) + " " + escapeControlBytes(function) +
           ":" + std::to_string(line) + " " + escapeControlBytes(withoutLeadingZero(text));
}
