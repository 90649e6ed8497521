#ifndef TESTSERVER_STORAGE_H
#define TESTSERVER_STORAGE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace testserver {

/// The one folder that the server serves. Clients name paths with "/" for that folder; nothing above it can be named,
/// and a link that leads out of it is not followed.
class Storage
{
public:
    /// `ignoresCase`: a name that is not there is one that is, but for the case of its letters.
    explicit Storage(const std::filesystem::path& root, bool ignoresCase = false);

    /// The client's path for an argument given in the client's directory `cwd`.
    static std::string absolute(const std::string& cwd, const std::string& argument);

    /// The real path behind a client's absolute path, or nothing where it leads out of the folder.
    std::optional<std::filesystem::path> real(const std::string& absolute) const;

    bool isDirectory(const std::string& absolute) const;
    /// Whether the last name is a link's, wherever that leads.
    bool isLink(const std::string& absolute) const;
    bool isFile(const std::string& absolute) const;
    /// Whether a file can be written there. Devices and pipes cannot: opening one could block forever.
    bool isWritable(const std::string& absolute) const;
    /// Bytes of a file; 0 for all else.
    std::uint64_t size(const std::string& absolute) const;

    /// The names in a directory, sorted.
    std::vector<std::string> names(const std::string& absolute) const;

private:
    std::filesystem::path located(const std::string& absolute) const;

    std::filesystem::path m_root;
    bool m_ignoresCase;
};

} // namespace testserver

#endif
