#ifndef SFTPCLIENT_CLI_USAGE_OPTIONS_H
#define SFTPCLIENT_CLI_USAGE_OPTIONS_H

#include "base/Arguments.h"

#include <string>
#include <vector>

enum class Use
{
    Everywhere,
    Operations, // everywhere but doctor
    OfHost,     // what SFtpClient does, too
    List,
    Transfers, // get, put, push and pull
    Trees,     // push and pull
    Single,    // neither those nor doctor
    Put,
    Doctor
};

/// An option of the command. The same name, differently spelt, sets it in the environment and in the configuration
/// file: --password-file, SFTPCLIENT_PASSWORD_FILE and password-file.
struct Option
{
    const char* name;  // with its "--"
    const char* value; // what the help calls its value; empty for a switch, whose value is yes or no
    const char* description;
    void (*store)(Arguments& arguments, const std::string& text); // throws std::invalid_argument: what it must be
    Use use = Use::Everywhere;
    bool ofSession = false; // nothing that --as-host knows
    const char* brief = ""; // its other name, such as "-l"
    bool repeats = false;   // each time it is given counts
};

/// All options, in the order in which the help shows them.
const std::vector<Option>& options();

/// Whether `operation` has the option.
bool belongsTo(const Option& option, Operation operation);

/// "SFTPCLIENT_PASSWORD_FILE" for "--password-file".
std::string variableOf(const Option& option);

/// "password-file" for "--password-file".
std::string keyOf(const Option& option);

#endif
