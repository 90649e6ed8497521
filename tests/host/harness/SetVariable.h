#ifndef SFTPCLIENT_TESTS_HOST_SETVARIABLE_H
#define SFTPCLIENT_TESTS_HOST_SETVARIABLE_H

#include <string>

/// An environment variable that has a value, or with null none, as long as this object lives; none afterwards.
class SetVariable
{
public:
    SetVariable(const std::string& name, const char* value);
    ~SetVariable();
    SetVariable(const SetVariable&) = delete;
    SetVariable& operator=(const SetVariable&) = delete;

private:
    std::string m_name;
};

#endif
