#include "doctor/Secret.h"

namespace doctor {

namespace {

constexpr char kHidden[] = "****";

}

std::string Secret::hiddenIn(std::string text) const
{
    if (m_password.empty()) {
        return text;
    }
    std::string::size_type at = 0;
    while ((at = text.find(m_password, at)) != std::string::npos) {
        text.replace(at, m_password.size(), kHidden);
        at += sizeof kHidden - 1;
    }
    return text;
}

} // namespace doctor
