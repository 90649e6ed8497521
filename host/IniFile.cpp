#include "IniFile.h"

#include <boost/property_tree/ini_parser.hpp>

IniFile::IniFile(const std::string& path) { boost::property_tree::read_ini(path, m_sections); }

// By name and not by path: a "." in a name is part of it.
std::optional<std::string> IniFile::find(const std::string& section, const std::string& key) const
{
    const auto keys = m_sections.find(section);
    if (keys == m_sections.not_found()) {
        return std::nullopt;
    }
    const auto value = keys->second.find(key);
    if (value == keys->second.not_found()) {
        return std::nullopt;
    }
    return value->second.data();
}
