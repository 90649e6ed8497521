#include "doctor/ServerText.h"

#include <utility>

namespace doctor {

ServerText::ServerText(std::string raw, const PasswordMask& mask) : m_raw(std::move(raw)), m_shown(mask.hiddenIn(m_raw))
{
}

ServerText ServerText::following(const std::string& beginning, std::string raw, const PasswordMask& mask)
{
    ServerText text(std::move(raw), mask);
    if (mask.hiddenIn(beginning + text.m_raw) != mask.hiddenIn(beginning) + text.m_shown) {
        text.m_shown.clear();
    }
    return text;
}

ServerText ServerText::restored(std::string raw, std::string shown)
{
    ServerText text;
    text.m_raw = std::move(raw);
    text.m_shown = std::move(shown);
    return text;
}

} // namespace doctor
