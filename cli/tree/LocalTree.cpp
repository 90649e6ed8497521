#include "tree/LocalTree.h"

#include "operation/Interruption.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;
using std::chrono::seconds;

[[noreturn]] void fail(int code, const std::string& what)
{
    throw TreeFailure(code, what + ": " + std::generic_category().message(errno));
}

std::string pathOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

std::array<timespec, 2> timesOf(FileTime modified)
{
    const auto whole = std::chrono::floor<seconds>(modified);
    return {
        {{0, UTIME_OMIT}, {whole.time_since_epoch().count(), duration_cast<nanoseconds>(modified - whole).count()}}};
}

TreeEntry entryOf(const struct stat& status)
{
    if (S_ISDIR(status.st_mode)) {
        return {EntryKind::Directory, -1, std::nullopt};
    }
    if (S_ISREG(status.st_mode)) {
        return {EntryKind::File, status.st_size, timeOf(status)};
    }
    return {EntryKind::Other, -1, std::nullopt};
}

int openRoot(const std::string& root)
{
    const int opened = open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) {
        fail(CURLE_READ_ERROR, root + " cannot be read as a directory");
    }
    return opened;
}

int openBelow(int folder, const std::string& name)
{
    return openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Lists a tree from one directory down.
class Lister
{
public:
    Lister(const Exclusions& exclusions, const LocalTree::OnFailure& failed)
        : m_exclusions(exclusions), m_failed(failed)
    {
    }

    void list(int folder, const std::string& path, unsigned depth)
    {
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(folder), closedir);
        if (!entries) {
            close(folder);
            fail(CURLE_READ_ERROR, "the directory cannot be read");
        }
        errno = 0;
        while (const dirent* const each = readdir(entries.get())) {
            take(dirfd(entries.get()), path, each->d_name, depth);
            errno = 0;
        }
        if (errno != 0) {
            fail(CURLE_READ_ERROR, "the directory cannot be read");
        }
    }

    TreeListing listing;

private:
    void take(int folder, const std::string& path, const std::string& name, unsigned depth)
    {
        struct stat status = {};
        if (!isPlainName(name) || Interruption::signal() != 0) {
            return;
        }
        if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) { // gone meanwhile
                fail(CURLE_READ_ERROR, "the directory cannot be read");
            }
            return;
        }
        if (addTo(listing, path, name, entryOf(status), m_exclusions)) {
            descend(folder, pathIn(path, name), name, depth + 1);
        }
    }

    void descend(int folder, const std::string& path, const std::string& name, unsigned depth)
    try {
        if (depth > kDeepest) {
            throw TreeFailure(CURLE_READ_ERROR, "more directories within each other than " + std::to_string(kDeepest));
        }
        const int below = openBelow(folder, name);
        if (below < 0) {
            fail(CURLE_READ_ERROR, "the directory cannot be read");
        }
        list(below, path, depth);
    } catch (const TreeFailure& failure) {
        m_failed(path, failure);
    }

    const Exclusions& m_exclusions;
    const LocalTree::OnFailure& m_failed;
};

} // namespace

// A time before 1677 or after 2262, which it cannot hold, becomes the nearest one that it can.
FileTime timeOf(const struct stat& status)
{
    constexpr seconds kEnd = duration_cast<seconds>(FileTime::duration::max()) - seconds(1);
    const seconds whole = std::clamp(seconds(status.st_mtim.tv_sec), -kEnd, kEnd);
    return FileTime(duration_cast<FileTime::duration>(whole + nanoseconds(status.st_mtim.tv_nsec)));
}

LocalTree::LocalTree(std::string root, bool isMissing)
    : m_path(std::move(root)), m_root(isMissing ? -1 : openRoot(m_path))
{
}

TreeListing LocalTree::list(const std::string& root, const Exclusions& exclusions, const OnFailure& failed)
{
    Lister lister(exclusions, failed);
    if (access(root.c_str(), F_OK) != 0 && errno == ENOENT) {
        lister.listing.isMissing = true;
    } else {
        lister.list(openRoot(root), "", 0);
    }
    return std::move(lister.listing);
}

Descriptor LocalTree::openFolder(const std::string& path, int failure) const
{
    int folder = fcntl(m_root.get(), F_DUPFD_CLOEXEC, 0);
    for (std::string::size_type begin = 0; folder >= 0 && begin < path.size();) {
        const std::string::size_type end = std::min(path.find('/', begin), path.size());
        const int below = openBelow(folder, path.substr(begin, end - begin));
        const int error = errno;
        close(folder);
        errno = error;
        folder = below;
        begin = end + 1;
    }
    if (folder < 0) {
        fail(failure, "its directory cannot be entered");
    }
    return Descriptor(folder);
}

void LocalTree::makeRoot()
{
    std::error_code error;
    std::filesystem::create_directories(m_path, error);
    if (error) {
        throw TreeFailure(CURLE_WRITE_ERROR, m_path + " cannot be made: " + error.message());
    }
    m_root.reset(openRoot(m_path));
}

void LocalTree::makeDirectory(const std::string& path)
{
    if (path.empty()) {
        makeRoot();
        return;
    }
    const auto [parent, name] = splitPath(path);
    if (mkdirat(openFolder(parent).get(), name.c_str(), 0777) != 0) {
        fail(CURLE_WRITE_ERROR, "the directory cannot be made");
    }
}

void LocalTree::removeFile(const std::string& path) { remove(path, 0, "the file"); }

void LocalTree::removeDirectory(const std::string& path) { remove(path, AT_REMOVEDIR, "the directory"); }

void LocalTree::remove(const std::string& path, int flags, const std::string& what) const
{
    const auto [parent, name] = splitPath(path);
    if (unlinkat(openFolder(parent).get(), name.c_str(), flags) != 0) {
        fail(CURLE_WRITE_ERROR, what + " cannot be deleted");
    }
}

void LocalTree::setModified(const std::string& path, FileTime modified) const
{
    const auto [parent, name] = splitPath(path);
    if (utimensat(openFolder(parent).get(), name.c_str(), timesOf(modified).data(), AT_SYMLINK_NOFOLLOW) != 0) {
        fail(CURLE_WRITE_ERROR, "its time cannot be set");
    }
}

// Without waiting for the writer of a pipe.
LocalTree::Leaving::Leaving(const LocalTree& tree, const std::string& path)
    : m_folder(tree.openFolder(splitPath(path).first, CURLE_READ_ERROR)), m_name(splitPath(path).second),
      m_file(openat(m_folder.get(), m_name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))
{
    if (!m_file.isOpen()) {
        fail(CURLE_READ_ERROR, "the file cannot be read");
    }
    if (fstat(m_file.get(), &m_status) != 0 || !S_ISREG(m_status.st_mode)) {
        throw TreeFailure(CURLE_READ_ERROR, "it is no longer a regular file");
    }
}

std::string LocalTree::Leaving::path() const { return pathOf(m_file.get()); }

FileTime LocalTree::Leaving::modified() const { return timeOf(m_status); }

bool LocalTree::Leaving::hasChanged() const
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(m_file.get(), &opened) != 0 || !isStill(opened) ||
           fstatat(m_folder.get(), m_name.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0 || !isStill(named);
}

bool LocalTree::Leaving::isStill(const struct stat& now) const
{
    return now.st_dev == m_status.st_dev && now.st_ino == m_status.st_ino && now.st_size == m_status.st_size &&
           timeOf(now) == modified();
}

LocalTree::Arriving::Arriving(const LocalTree& tree, const std::string& path, const std::string& salt)
    : m_folder(tree.openFolder(splitPath(path).first)), m_name(splitPath(path).second),
      m_temporary(arrivingName(m_name, salt))
{
    unlinkat(m_folder.get(), m_temporary.c_str(), 0);
    takeModeOf(m_name);
}

// Nobody reads the new file, while it comes or afterwards, who may not read the one that it replaces.
void LocalTree::Arriving::takeModeOf(const std::string& name) const
{
    struct stat there = {};
    if (fstatat(m_folder.get(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0) {
        return;
    }
    if (!S_ISREG(there.st_mode)) {
        throw TreeFailure(CURLE_WRITE_ERROR, "there is something else than a file of this name");
    }
    const Descriptor file(
        openat(m_folder.get(), m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file.isOpen()) {
        fail(CURLE_WRITE_ERROR, "the file cannot be written");
    }
    // Another group gets none of its rights, and what a server sends no set-user-ID.
    const bool hasOwner = fchown(file.get(), there.st_uid, there.st_gid) == 0;
    static_cast<void>(fchmod(file.get(), there.st_mode & (hasOwner ? 0777U : 0707U)));
}

LocalTree::Arriving::~Arriving()
{
    if (!m_temporary.empty()) {
        unlinkat(m_folder.get(), m_temporary.c_str(), 0);
    }
}

std::string LocalTree::Arriving::path() const { return pathOf(m_folder.get()) + "/" + m_temporary; }

void LocalTree::Arriving::takePlace(const std::optional<FileTime>& modified)
{
    const bool isTimed = !modified || utimensat(m_folder.get(), m_temporary.c_str(), timesOf(*modified).data(),
                                                AT_SYMLINK_NOFOLLOW) == 0;
    if (!isTimed || renameat(m_folder.get(), m_temporary.c_str(), m_folder.get(), m_name.c_str()) != 0) {
        fail(CURLE_WRITE_ERROR, "the file cannot be written");
    }
    m_temporary.clear();
}
