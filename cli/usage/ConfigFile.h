#ifndef SFTPCLIENT_CLI_USAGE_CONFIGFILE_H
#define SFTPCLIENT_CLI_USAGE_CONFIGFILE_H

#include <map>
#include <optional>
#include <string>

/// The configuration file: an INI file whose section [sftpclient] sets options. The sections of the host services, such
/// as [General], live in the same file and are left to them.
struct ConfigFile
{
    std::string path;
    std::map<std::string, std::string> values; // by the options' names without "--"
};

/// The file `path`; where that is empty, the one in its place in the user's home (config in the folder sftpclient of
/// XDG_CONFIG_HOME, or else of ~/.config), or nothing where there is none. Throws `UsageError`, naming the file, when
/// it cannot be read, is no INI file, or sets what is no option.
std::optional<ConfigFile> findConfigFile(const std::string& path);

#endif
