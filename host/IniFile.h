#ifndef SFTPCLIENT_HOST_INIFILE_H
#define SFTPCLIENT_HOST_INIFILE_H

#include <boost/property_tree/ptree.hpp>

#include <optional>
#include <string>

/// The contents of an INI file at the moment it was read; they do not change afterwards.
class IniFile
{
public:
    /// Reads the file. Throws `std::runtime_error` with a text that names the file, when it cannot be read or is no INI
    /// file: among others when a key or a section is there twice.
    explicit IniFile(const std::string& path);

    /// The text under `key` of `section`, or nothing where there is none.
    std::optional<std::string> find(const std::string& section, const std::string& key) const;

private:
    boost::property_tree::ptree m_sections;
};

#endif
