#include "tree/Names.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <functional>

namespace {

constexpr std::size_t kDigits = 12;
constexpr std::size_t kLongestPart = 180; // of a name, so that it is not too long with what is added

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

template <typename Test>
bool areAll(const std::string& text, Test test)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [&test](unsigned char each) { return test(each) != 0; });
}

bool isNumber(const std::string& text)
{
    return areAll(text, [](int each) { return std::isdigit(each); });
}

// Takes ".DIGITS" from the end.
std::string takeEnd(std::string& text)
{
    const std::string::size_type dot = text.rfind('.');
    if (dot == std::string::npos) {
        return {};
    }
    std::string end = text.substr(dot + 1);
    text.resize(dot);
    return end;
}

// One step: a temporary file may itself arrive under a temporary name.
std::optional<std::string> targetOf(const std::string& name)
{
    const bool isPart = endsWith(name, ".part");
    if (name.front() != '.' || (!isPart && !endsWith(name, ".old"))) {
        return std::nullopt;
    }
    std::string rest = name.substr(1);
    takeEnd(rest);
    const std::string digits = takeEnd(rest);
    const bool isHex = digits.size() == kDigits && areAll(digits, [](int each) { return std::isxdigit(each); });
    const bool isCounted = !isHex && isPart && isNumber(digits) && isNumber(takeEnd(rest));
    return (isHex || isCounted) && !rest.empty() ? std::optional(rest) : std::nullopt;
}

} // namespace

bool isPlainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

bool holdsDotName(const std::string& path) { return ("/" + path).find("/.") != std::string::npos; }

bool holdsControlByte(const std::string& name)
{
    constexpr unsigned char kDelete = 0x7f;
    return std::any_of(name.begin(), name.end(), [](unsigned char each) { return each < ' ' || each == kDelete; });
}

std::optional<std::string> targetOfLeftover(const std::string& name)
{
    std::optional<std::string> target;
    for (std::optional<std::string> next = targetOf(name); next; next = targetOf(*target)) {
        target = next;
    }
    return target;
}

std::string arrivingName(const std::string& name, const std::string& salt)
{
    std::array<char, 32> digits = {};
    constexpr unsigned long long kMask = 0xffffffffffff;
    const unsigned long long hash = std::hash<std::string>()(salt + "/" + name);
    static_cast<void>(std::snprintf(digits.data(), digits.size(), "%012llx", hash & kMask));
    return "." + name.substr(0, kLongestPart) + "." + digits.data() + ".part";
}

bool Exclusions::cover(const std::string& path, bool isDirectory) const
{
    const std::string name = splitPath(path).second;
    return std::any_of(m_patterns.begin(), m_patterns.end(), [&](std::string pattern) {
        const bool directoriesOnly = pattern.size() > 1 && pattern.back() == '/';
        pattern.resize(pattern.size() - (directoriesOnly ? 1 : 0));
        const std::string::size_type slash = pattern.find('/');
        const std::string& compared = slash == std::string::npos ? name : path;
        const char* const text = pattern.c_str() + (slash == 0 ? 1 : 0);
        return (isDirectory || !directoriesOnly) && fnmatch(text, compared.c_str(), FNM_PATHNAME) == 0;
    });
}

bool addTo(TreeListing& listing, const std::string& directory, const std::string& name, const TreeEntry& entry,
           const Exclusions& exclusions)
{
    const std::string path = pathIn(directory, name);
    if (exclusions.cover(path, entry.kind == EntryKind::Directory)) {
        listing.excluded.push_back(path);
        return false;
    }
    if (entry.kind == EntryKind::File && targetOfLeftover(name)) {
        listing.leftovers.push_back(path);
        return false;
    }
    if (entry.kind == EntryKind::Other) {
        listing.links.push_back(path);
        return false;
    }
    return listing.entries.emplace(path, entry).second && entry.kind == EntryKind::Directory;
}
