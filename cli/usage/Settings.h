#ifndef SFTPCLIENT_CLI_USAGE_SETTINGS_H
#define SFTPCLIENT_CLI_USAGE_SETTINGS_H

#include "base/Arguments.h"

#include <map>
#include <string>

/// What the command line said, by the options' names.
using TypedOptions = std::map<std::string, std::string>;

/// Gives each option its value: the command line's, or else the environment's (an empty variable counts as none), or
/// else the configuration file's. Throws `UsageError`, which names where a wrong value comes from.
void applySettings(const TypedOptions& typed, Arguments& arguments);

#endif
