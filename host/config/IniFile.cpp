#include "IniFile.h"

#include <boost/property_tree/ini_parser.hpp>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
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

// A device may have no end.
std::string contentOf(const std::string& path)
{
    constexpr std::size_t kMostBytes = 16777216;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + ": cannot open file");
    }
    std::string content;
    std::array<char, 4096> block;
    while (file.read(block.data(), block.size()), file.gcount() > 0) {
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
        if (content.size() > kMostBytes) {
            throw std::runtime_error(path + ": more than " + std::to_string(kMostBytes) + " bytes");
        }
    }
    if (file.bad()) {
        throw std::runtime_error(path + ": cannot read file");
    }
    return content;
}

boost::property_tree::ptree parsed(const std::string& path)
try {
    boost::property_tree::ptree file;
    std::istringstream content(contentOf(path));
    boost::property_tree::read_ini(content, file);
    return file;
} catch (const boost::property_tree::ini_parser_error& error) {
    throw std::runtime_error(path + "(" + std::to_string(error.line()) + "): " + error.message());
}

} // namespace

IniFile::IniFile(const std::string& path)
{
    const boost::property_tree::ptree file = parsed(path);
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
