#include "support/SetVariable.h"

#include <cstdlib>

namespace {

void set(const std::string& name, const char* value)
{
    if (value == nullptr) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value, 1);
    }
}

} // namespace

SetVariable::SetVariable(const std::string& name, const char* value) : m_name(name)
{
    if (const char* const before = std::getenv(name.c_str())) {
        m_before = before;
    }
    set(name, value);
}

SetVariable::~SetVariable() { set(m_name, m_before ? m_before->c_str() : nullptr); }
