#include "tree/Names.h"

#include <boost/algorithm/string/predicate.hpp>
#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>

namespace {

constexpr std::size_t kDigits = 12;
constexpr std::size_t kLongestPart = 180; // of a name, so that it is not too long with what is added

bool isMadeOf(const std::string& characters, const std::string& text)
{
    return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
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
    const std::string kNumber = "0123456789";
    const bool isPart = boost::ends_with(name, ".part");
    if (name.front() != '.' || (!isPart && !boost::ends_with(name, ".old"))) {
        return std::nullopt;
    }
    std::string rest = name.substr(1);
    takeEnd(rest);
    const std::string digits = takeEnd(rest);
    const bool isHex = digits.size() == kDigits && isMadeOf(kNumber + "abcdefABCDEF", digits);
    const bool isCounted = !isHex && isPart && isMadeOf(kNumber, digits) && isMadeOf(kNumber, takeEnd(rest));
    return (isHex || isCounted) && !rest.empty() ? std::optional(rest) : std::nullopt;
}

} // namespace

bool holdsDotName(const std::string& path) { return ("/" + path).find("/.") != std::string::npos; }

std::optional<std::string> targetOfLeftover(const std::string& name)
{
    std::optional<std::string> target;
    for (std::optional<std::string> next = targetOf(name); next; next = targetOf(*target)) {
        target = next;
    }
    return target;
}

// By `arrivingName`, or by a session, which leaves out what exceeds 255 bytes.
bool mayBeCut(const std::string& name, const std::string& target)
{
    constexpr std::size_t kShortest = 233;
    return target.size() >= kShortest || (target.size() == kLongestPart && boost::ends_with(name, ".part"));
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
