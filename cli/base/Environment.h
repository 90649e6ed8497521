#ifndef SFTPCLIENT_CLI_BASE_ENVIRONMENT_H
#define SFTPCLIENT_CLI_BASE_ENVIRONMENT_H

#include <cstdlib>
#include <string>

/// The variable's text; empty where there is none, or the process has rights that whoever set it does not have.
inline std::string environmentText(const std::string& variable)
{
    const char* const text = secure_getenv(variable.c_str());
    return text == nullptr ? "" : text;
}

#endif
