#ifndef SUPPORT_SETVARIABLE_H
#define SUPPORT_SETVARIABLE_H

#include <optional>
#include <string>

/// An environment variable that has a value, or with null none, as long as this object lives; afterwards it is as it
/// was.
class SetVariable
{
public:
    SetVariable(const std::string& name, const char* value);
    SetVariable(const std::string& name, const std::string& value) : SetVariable(name, value.c_str()) {}
    ~SetVariable();
    SetVariable(const SetVariable&) = delete;
    SetVariable& operator=(const SetVariable&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_before;
};

#endif
