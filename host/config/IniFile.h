#ifndef SFTPCLIENT_HOST_INIFILE_H
#define SFTPCLIENT_HOST_INIFILE_H

#include <initializer_list>
#include <map>
#include <optional>
#include <string>

/// The contents of an INI file at the moment it was read; they do not change afterwards, so that any number of threads
/// may ask at the same time.
class IniFile
{
public:
    /// One without any section.
    IniFile() = default;

    /// Reads the file. Throws `std::runtime_error` with a text that names the file, when it cannot be read or is no INI
    /// file: among others when a key or a section is there twice.
    explicit IniFile(const std::string& path);

    /// The text under `key` of `section`, or nothing where there is none.
    std::optional<std::string> find(const std::string& section, const std::string& key) const;

    /// Throws `std::runtime_error` when `section` has a key that is none of `known`: a misspelt key would otherwise
    /// count as missing.
    void allowOnly(const std::string& section, std::initializer_list<const char*> known) const;

private:
    std::map<std::string, std::map<std::string, std::string>> m_sections;
};

#endif
