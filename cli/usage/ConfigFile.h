#ifndef SFTPCLIENT_CLI_USAGE_CONFIGFILE_H
#define SFTPCLIENT_CLI_USAGE_CONFIGFILE_H

#include <map>
#include <optional>
#include <string>

/// The configuration file: an INI file whose section [sftpclient] sets options by their names without "--". The
/// sections of the host services, such as [General], live in the same file and are left to them.
class ConfigFile
{
public:
    /// Throws `UsageError`, naming the file, when it cannot be read, is no INI file, or sets what is no option.
    explicit ConfigFile(const std::string& path);

    const std::string& path() const { return m_path; }

    /// The text under `key`, or null.
    const std::string* find(const std::string& key) const;

private:
    std::string m_path;
    std::map<std::string, std::string> m_values;
};

/// The file `path`; where that is empty, the one in its place in the user's home (config in the folder sftpclient of
/// XDG_CONFIG_HOME, or else of ~/.config), or nothing where there is none.
std::optional<ConfigFile> findConfigFile(const std::string& path);

#endif
