#ifndef SFTPCLIENT_CLI_USAGE_COMMANDLINE_H
#define SFTPCLIENT_CLI_USAGE_COMMANDLINE_H

#include "base/Arguments.h"

#include <optional>

/// Reads the command line, and with it the environment and the configuration file. Where there is nothing to run,
/// because help or the version was asked for or the usage is wrong, it prints what is to be said, sets `status` to the
/// exit status and returns nothing. Throws `UsageError` for a wrong value.
std::optional<Arguments> parseArguments(int argc, const char* const* argv, int& status);

#endif
