#include "tree/Plan.h"

#include "tree/Names.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <curl/curl.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <tuple>

namespace {

using Seconds = std::chrono::seconds;

// The question that remains for a pair of files; nothing where they are the same.
std::optional<Question> questionAbout(const TreeEntry& from, const TreeEntry& to, const PlanRules& rules)
{
    if (from.size < 0 || from.size != to.size) {
        return Question::None;
    }
    if (rules.checksums) {
        return Question::Checksum;
    }
    if (!from.modified || !to.modified) {
        return Question::Time;
    }
    if (areSameTimes(*from.modified, *to.modified)) {
        return std::nullopt;
    }
    return *to.modified > *from.modified ? Question::Newer : Question::None;
}

// All directories above a path.
void addParents(std::string path, std::set<std::string>& parents)
{
    while (!path.empty()) {
        path = splitPath(path).first;
        parents.insert(path);
    }
}

bool showsDotNames(const TreeListing& listing)
{
    const auto holdsAny = [](const std::vector<std::string>& paths) {
        return std::any_of(paths.begin(), paths.end(), holdsDotName);
    };
    return holdsAny(listing.links) || holdsAny(listing.excluded) || holdsAny(listing.leftovers) ||
           std::any_of(listing.entries.begin(), listing.entries.end(),
                       [](const auto& each) { return holdsDotName(each.first); });
}

// Pure-FTPd puts "_" in place of a blank at the beginning or the end, Windows leaves it out at the end, with dots. To
// ProFTPD, two bytes 255 are one, as in Telnet. Letters beyond ASCII may have cases too, and several spellings.
bool isChangedBySome(const std::string& path)
{
    const auto signs = {"/ ", " /", "./"};
    const std::string names = "/" + path + "/";
    return std::any_of(signs.begin(), signs.end(),
                       [&names](const char* sign) { return names.find(sign) != names.npos; }) ||
           std::any_of(names.begin(), names.end(), [](unsigned char byte) { return byte > 0x7f; });
}

/// Makes the plan, one path after the other.
class Planner
{
public:
    Planner(const TreeListing& source, const TreeListing& destination, const PlanRules& rules)
        : m_source(source), m_destination(destination), m_rules(rules),
          m_links(source.links.begin(), source.links.end()),
          m_others(destination.links.begin(), destination.links.end())
    {
        for (const FailedPath& each : rules.unlisted) {
            m_unlisted.insert(each.path);
        }
    }

    Plan plan()
    {
        if (m_destination.isMissing) {
            m_plan.directories.emplace_back();
        }
        for (const auto& [path, entry] : m_source.entries) {
            if (isBelow(path, m_unlisted)) {
                continue;
            }
            if (holdsControlByte(path)) { // no session takes such a name
                refuse(path, m_rules.isPush ? "sent" : "fetched");
            } else {
                place(path, entry);
            }
        }
        // One directory's files one after the other: a connection need not go to and fro.
        std::sort(m_plan.moves.begin(), m_plan.moves.end(),
                  [](const Move& one, const Move& other) { return splitPath(one.path) < splitPath(other.path); });
        if (m_rules.deletes) {
            remove();
        }
        return std::move(m_plan);
    }

private:
    // Not what is in a directory that is refused.
    void refuse(const std::string& path, const std::string& what)
    {
        if (!holdsControlByte(splitPath(path).first)) {
            m_plan.refused.push_back(
                {path, CURLE_BAD_FUNCTION_ARGUMENT, "a name with a control byte cannot be " + what});
        }
    }

    void place(const std::string& path, const TreeEntry& entry)
    {
        const auto there = m_destination.entries.find(path);
        const bool isThere = there != m_destination.entries.end();
        if (isBelow(path, m_plan.blocked)) {
            return;
        }
        if (m_others.count(path) > 0 || (isThere && there->second.kind != entry.kind)) {
            m_plan.blocked.insert(path);
        } else if (entry.kind == EntryKind::Directory) {
            if (!isThere) {
                m_plan.directories.push_back(path);
            }
        } else if (!isThere) {
            m_plan.moves.push_back({path, entry, std::nullopt, Question::None});
        } else if (const std::optional<Question> question = questionAbout(entry, there->second, m_rules)) {
            m_plan.moves.push_back({path, entry, there->second, *question});
        } else {
            ++m_plan.unchanged;
        }
    }

    // Not what leads to something that stays.
    void remove()
    {
        std::set<std::string> kept;
        for (const auto* const paths : {&m_destination.links, &m_destination.excluded}) {
            for (const std::string& path : *paths) {
                addParents(path, kept);
            }
        }
        // A link or an excluded name in the source says nothing about what the destination has there.
        for (const auto* const paths : {&m_source.links, &m_source.excluded}) {
            kept.insert(paths->begin(), paths->end());
        }
        for (const std::string& path : m_source.links) {
            addParents(path, kept);
        }
        keepWhatMayBeHidden(kept);
        for (auto each = m_destination.entries.rbegin(); each != m_destination.entries.rend(); ++each) {
            const auto& [path, entry] = *each;
            if (m_source.entries.count(path) > 0 || kept.count(path) > 0 || isBelow(path, m_links)) {
                continue;
            }
            if (m_rules.isPush && holdsControlByte(path)) {
                refuse(path, "deleted");
            } else {
                (entry.kind == EntryKind::Directory ? m_plan.folders : m_plan.files).push_back(path);
            }
        }
    }

    // Some servers do not list names that begin with a dot.
    void keepWhatMayBeHidden(std::set<std::string>& kept) const
    {
        if (m_rules.isPush || showsDotNames(m_source)) {
            return;
        }
        for (const auto& each : m_destination.entries) {
            if (holdsDotName(each.first)) {
                kept.insert(each.first);
                addParents(each.first, kept);
            }
        }
    }

    static bool isBelow(std::string path, const std::set<std::string>& those)
    {
        while (!those.empty() && !path.empty()) {
            path = splitPath(path).first;
            if (those.count(path) > 0) {
                return true;
            }
        }
        return false;
    }

    const TreeListing& m_source;
    const TreeListing& m_destination;
    const PlanRules& m_rules;
    const std::set<std::string> m_links;
    const std::set<std::string> m_others;
    std::set<std::string> m_unlisted;
    Plan m_plan;
};

} // namespace

bool areSameTimes(FileTime one, FileTime other)
{
    const auto apart = std::chrono::floor<Seconds>(one) - std::chrono::floor<Seconds>(other);
    return std::abs(apart.count()) <= 1;
}

std::vector<std::string> doubtfulIn(const Plan& plan, const TreeListing& source)
{
    std::map<std::string, std::set<std::string>> byLetters;
    const auto add = [&byLetters](const std::string& path) { byLetters[boost::to_lower_copy(path)].insert(path); };
    std::for_each(plan.directories.begin(), plan.directories.end(), add);
    std::for_each(plan.moves.begin(), plan.moves.end(), [&add](const Move& each) { add(each.path); });
    std::for_each(plan.files.begin(), plan.files.end(), add);
    std::for_each(plan.folders.begin(), plan.folders.end(), add);
    for (const auto& [path, unused] : source.entries) {
        const auto same = byLetters.find(boost::to_lower_copy(path));
        if (same != byLetters.end()) {
            same->second.insert(path);
        }
    }
    std::vector<std::string> doubtful;
    for (const auto& [letters, paths] : byLetters) {
        if (paths.size() > 1 || (source.entries.count(*paths.begin()) > 0 && isChangedBySome(*paths.begin()))) {
            doubtful.insert(doubtful.end(), paths.begin(), paths.end());
        }
    }
    return doubtful;
}

std::vector<std::string> missingIn(const TreeListing& listing, const std::vector<std::string>& paths)
{
    const bool showsAll = showsDotNames(listing);
    std::vector<std::string> missing;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(missing), [&](const std::string& path) {
        return listing.entries.count(path) == 0 && (showsAll || !holdsDotName(path));
    });
    return missing;
}

Plan planOf(const TreeListing& source, const TreeListing& destination, const PlanRules& rules)
{
    return Planner(source, destination, rules).plan();
}
