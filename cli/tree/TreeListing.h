#ifndef SFTPCLIENT_CLI_TREE_TREELISTING_H
#define SFTPCLIENT_CLI_TREE_TREELISTING_H

#include "base/ServerReplies.h"

#include <SFtpSession.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using FileTime = std::chrono::system_clock::time_point;

/// A file or directory of a tree.
struct TreeEntry
{
    EntryKind kind = EntryKind::File;
    std::int64_t size = -1;           ///< of a file, in bytes; -1: unknown
    std::optional<FileTime> modified; ///< of a file, as far as the listing tells
};

/// What is in a tree, by paths such as "weekly/sunday.bak"; the tree itself has the path "".
struct TreeListing
{
    bool isMissing = false; ///< there is no such tree
    std::map<std::string, TreeEntry> entries;
    std::vector<std::string> links;     ///< links, devices and the like: neither moved nor deleted
    std::vector<std::string> excluded;  ///< as asked for; what is below is not known
    std::vector<std::string> leftovers; ///< of transfers that broke off
};

/// What could not be done with a path, and libcurl's code for it.
struct FailedPath
{
    std::string path;
    int code = 0;
    std::string text;
};

/// Ends what is done with one path.
class TreeFailure : public std::runtime_error
{
public:
    TreeFailure(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}

    int code() const { return m_code; }
    /// The code of the server's last reply, as a session tells it at the end of its text; 0 where it tells none.
    int reply() const { return codeQuotedIn(what()); }

private:
    int m_code;
};

/// A tree that is to become like another. Each function throws `TreeFailure`.
class Destination
{
public:
    virtual ~Destination() = default;

    /// Of "": the tree itself, and what is missing above it.
    virtual void makeDirectory(const std::string& path) = 0;
    virtual void removeFile(const std::string& path) = 0;
    virtual void removeDirectory(const std::string& path) = 0;
};

/// The most directories within each other; a server could make up more without end.
constexpr unsigned kDeepest = 100;

/// "weekly/sunday.bak" of "weekly" and "sunday.bak".
inline std::string pathIn(const std::string& directory, const std::string& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

/// The directory, and the name in it.
inline std::pair<std::string, std::string> splitPath(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? std::pair(std::string(), path)
                                      : std::pair(path.substr(0, slash), path.substr(slash + 1));
}

/// How many names it has: 0 of the tree itself.
inline std::size_t depthOf(const std::string& path)
{
    return path.empty() ? 0 : 1 + static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
}

#endif
