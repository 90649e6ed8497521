#include "IniFile.h"

#include <boost/property_tree/ini_parser.hpp>

#include <algorithm>
#include <stdexcept>

namespace {

std::string joined(std::initializer_list<const char*> words)
{
    std::string text;
    for (const char* const word : words) {
        text.append(text.empty() ? "" : ", ").append(word);
    }
    return text;
}

} // namespace

IniFile::IniFile(const std::string& path)
{
    boost::property_tree::ptree file;
    boost::property_tree::read_ini(path, file);
    for (const auto& section : file) {
        for (const auto& key : section.second) {
            m_sections[section.first][key.first] = key.second.data();
        }
    }
}

std::optional<std::string> IniFile::find(const std::string& section, const std::string& key) const
{
    const auto keys = m_sections.find(section);
    if (keys == m_sections.end()) {
        return std::nullopt;
    }
    const auto value = keys->second.find(key);
    return value == keys->second.end() ? std::nullopt : std::optional<std::string>(value->second);
}

void IniFile::allowOnly(const std::string& section, std::initializer_list<const char*> known) const
{
    const auto keys = m_sections.find(section);
    if (keys == m_sections.end()) {
        return;
    }
    for (const auto& key : keys->second) {
        if (std::find(known.begin(), known.end(), key.first) == known.end()) {
            throw std::runtime_error("[" + section + "] has a key \"" + key.first + "\", but knows only " +
                                     joined(known));
        }
    }
}
