#ifndef SESSION_WORLD_H
#define SESSION_WORLD_H

#include "support/TemporaryFolder.h"

#include <cctype>
#include <filesystem>
#include <map>
#include <ostream>
#include <set>
#include <string>

/// What a folder holds: files with their contents, and directories, by their paths within it.
struct World
{
    std::map<std::string, std::string> files;
    std::set<std::string> directories;

    bool operator==(const World& other) const { return files == other.files && directories == other.directories; }
};

inline std::ostream& operator<<(std::ostream& stream, const World& world)
{
    for (const std::string& each : world.directories) {
        stream << each << "/ ";
    }
    for (const auto& [name, content] : world.files) {
        stream << "\"" << name << "\" (" << content.size() << " bytes, " << content.substr(0, 8) << ") ";
    }
    return stream;
}

inline World worldIn(const std::string& folder)
{
    World world;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string path = each.path().string().substr(std::filesystem::path(folder).string().size());
        if (each.is_directory()) {
            world.directories.insert(path);
        } else {
            world.files[path] = contentOf(each.path());
        }
    }
    return world;
}

inline std::string parentOf(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

inline std::string nameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

inline bool holds(const World& world, const std::string& directory)
{
    return directory.empty() || world.directories.count(directory) == 1;
}

inline bool isEmpty(const World& world, const std::string& directory)
{
    for (const std::string& each : world.directories) {
        if (parentOf(each) == directory) {
            return false;
        }
    }
    for (const auto& each : world.files) {
        if (parentOf(each.first) == directory) {
            return false;
        }
    }
    return true;
}

/// The path with percent codes, as a URL needs it.
inline std::string inUrl(const std::string& path)
{
    std::string coded;
    for (const char each : path) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        const auto byte = static_cast<unsigned char>(each);
        const bool plain = std::isalnum(byte) != 0 || each == '/' || each == '.';
        coded += plain ? std::string(1, each) : std::string("%") + kDigits[byte >> 4U] + kDigits[byte & 0xfU];
    }
    return coded;
}

#endif
