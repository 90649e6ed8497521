#ifndef SFTPCLIENT_CLI_USAGE_COMMANDS_H
#define SFTPCLIENT_CLI_USAGE_COMMANDS_H

#include "base/Arguments.h"

#include <string>
#include <vector>

/// A word that follows the operation on the command line.
struct Positional
{
    const char* name;
    std::string Arguments::*value;
    const char* description;
    bool required;
};

/// One operation as the command line knows it. A new one needs a line here and a case in main.
struct Command
{
    Operation operation;
    const char* name;
    const char* description;
    std::vector<Positional> positionals;
    const char* examples;
};

/// All operations, in the order in which the help shows them.
const std::vector<Command>& commands();

#endif
