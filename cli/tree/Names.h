#ifndef SFTPCLIENT_CLI_TREE_NAMES_H
#define SFTPCLIENT_CLI_TREE_NAMES_H

#include "base/Checks.h"
#include "tree/TreeListing.h"

#include <optional>
#include <string>
#include <vector>

/// Whether a name in the path begins with a dot.
bool holdsDotName(const std::string& path);

/// Of a name that a transfer's temporary file has (".NAME.DIGITS.part", ".NAME.DIGITS.old"), the name that the file was
/// to get, as far as it fits; nothing for other names.
std::optional<std::string> targetOfLeftover(const std::string& name);

/// Whether the target of such a name may be the beginning of the file's name only.
bool mayBeCut(const std::string& name, const std::string& target);

/// The name under which a file arrives in its directory, before it is whole. `salt` tells those apart that arrive at
/// the same time.
std::string arrivingName(const std::string& name, const std::string& salt);

/// The patterns of --exclude: shell patterns. One with a "/" in it, but at its end, is compared with the path in the
/// tree, and others with each name; a "/" at the end stands for directories alone.
class Exclusions
{
public:
    explicit Exclusions(std::vector<std::string> patterns) : m_patterns(std::move(patterns)) {}

    bool cover(const std::string& path, bool isDirectory) const;

private:
    std::vector<std::string> m_patterns;
};

/// Sorts an entry of `directory` into the listing. Whether it is a directory to be listed, too.
bool addTo(TreeListing& listing, const std::string& directory, const std::string& name, const TreeEntry& entry,
           const Exclusions& exclusions);

#endif
