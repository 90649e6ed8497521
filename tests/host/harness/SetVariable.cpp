#include "harness/SetVariable.h"

#include <cstdlib>

SetVariable::SetVariable(const std::string& name, const char* value) : m_name(name)
{
    if (value == nullptr) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value, 1);
    }
}

SetVariable::~SetVariable() { unsetenv(m_name.c_str()); }
