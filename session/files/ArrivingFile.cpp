#include "call/Failure.h"
#include "files/LocalFiles.h"
#include "request/Text.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace session {

namespace {

constexpr std::chrono::milliseconds kLook(20);

Failure failure(const std::string& path, int error)
{
    return refusal(CURLE_WRITE_ERROR,
                   "localPath " + shown(path, {}) + " cannot be written: " + std::generic_category().message(error));
}

// Otherwise the link itself would be replaced, not the file that it leads to, or will lead to. What is no file is not
// replaced, and need not have a name of its own: a pipe behind /dev/stdout has none.
std::string withoutLinks(const std::string& path)
{
    struct stat there = {};
    if (stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) {
        return path;
    }
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    if (real) {
        return real.get();
    }
    if (errno == ELOOP) {
        throw failure(path, ELOOP);
    }
    std::error_code isNoLink;
    const std::filesystem::path target = std::filesystem::read_symlink(path, isNoLink);
    return isNoLink ? path : withoutLinks(std::filesystem::path(path).parent_path() / target);
}

// Otherwise a crash could lose the new name, and the old file with it.
void saveFolder(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const Descriptor folder(open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) {
        static_cast<void>(fsync(folder.get()));
    }
}

// A disk on the network may tell only when a descriptor is closed that it has not taken the bytes. A second one, as the
// file's own holds its lock.
bool closesWell(int descriptor)
{
    const int second = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    return second >= 0 && close(second) == 0;
}

// False if another call holds the lock. A file system without locks counts as free.
bool isLocked(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

// Whether the open file is still the one of that name, and the user's alone.
bool isOurs(int descriptor, const std::string& path, struct stat& opened)
{
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 && S_ISREG(opened.st_mode) &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev && opened.st_uid == geteuid() &&
           opened.st_nlink == 1;
}

// The mode of a file that replaces one with this mode. Without its owner and group, a group gets no more than all. What
// a server sends gets no set-user-ID.
mode_t modeAs(mode_t replaced, bool hasOwner) { return replaced & (hasOwner ? 0777U : 0707U | (replaced & 07U) << 3U); }

} // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(m_number, other.m_number);
    return *this;
}

Descriptor::~Descriptor()
{
    if (isOpen()) {
        close(m_number);
    }
}

ArrivingFile::ArrivingFile(const std::string& path, const Call& call) : ArrivingFile(path, call, std::string()) {}

ArrivingFile::ArrivingFile(const std::string& path, const Call& call, const std::string& version)
    : m_call(call), m_asked(path), m_path(withoutLinks(path))
{
    requireFile(path);
    struct stat there = {};
    const bool exists = stat(m_path.c_str(), &there) == 0;
    if (exists && S_ISREG(there.st_mode)) {
        m_replaced = there;
    }
    if (exists && !m_replaced) {
        openPipe();
    } else if (exists && access(m_path.c_str(), W_OK) != 0) {
        fail(errno);
    } else {
        openKept(version);
        openNew();
    }
    if (!m_descriptor.isOpen()) {
        m_temporary.clear();
        fail(errno);
    }
    if (m_replaced) {
        static_cast<void>(fchmod(m_descriptor.get(), mode())); // an earlier attempt may have replaced nothing
    }
}

// Readable by no one who may not read the file that it replaces, whose group may be another.
mode_t ArrivingFile::mode() const { return m_replaced ? 0600 : 0666; }

// The lock keeps two calls from writing to one file; closing the descriptor releases it.
void ArrivingFile::openKept(const std::string& version)
{
    if (version.empty()) {
        return;
    }
    const std::string path = beside(version + ".part");
    Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, mode()));
    struct stat opened = {};
    if (!file.isOpen() || !isLocked(file.get()) || !isOurs(file.get(), path, opened)) {
        return;
    }
    m_descriptor = std::move(file);
    m_temporary = path;
    m_size = opened.st_size;
    m_isKept = true;
}

// Unless a kept one is open.
void ArrivingFile::openNew()
{
    for (unsigned i = 0; !m_descriptor.isOpen() && (i == 0 || errno == EEXIST); ++i) {
        m_temporary = beside(std::to_string(getpid()) + "." + std::to_string(i) + ".part");
        m_descriptor = Descriptor(open(m_temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode()));
    }
}

// Waits for a reader, but not beyond the call's end.
void ArrivingFile::openPipe()
{
    m_descriptor = Descriptor(open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
    const auto isPipe = [this] {
        struct stat there = {};
        return stat(m_path.c_str(), &there) == 0 && S_ISFIFO(there.st_mode);
    };
    while (!m_descriptor.isOpen() && errno == ENXIO && isPipe()) {
        requireCall();
        std::this_thread::sleep_for(kLook);
        m_descriptor = Descriptor(open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
    }
}

void ArrivingFile::requireCall() const
{
    if (const CURLcode verdict = m_call.verdict()) {
        throw refusal(verdict, m_call.reason() + " while nobody read from localPath " + shown(m_asked, {}));
    }
}

std::string ArrivingFile::beside(const std::string& middle) const
{
    const std::string::size_type name = m_path.rfind('/') + 1;
    return m_path.substr(0, name) + hiddenName(m_path.substr(name), middle);
}

void ArrivingFile::fail(int error)
{
    // On a full disk, a kept file would only be in the way.
    m_isKept = false;
    throw failure(m_asked, error);
}

void ArrivingFile::requireFile(const std::string& path)
{
    struct stat there = {};
    const bool isDirectory = stat(path.c_str(), &there) == 0 && S_ISDIR(there.st_mode);
    if (isDirectory || path.empty() || path.back() == '/') {
        throw failure(path, path.empty() ? ENOENT : EISDIR);
    }
}

ArrivingFile::~ArrivingFile()
{
    // Before the lock is released.
    if (!m_temporary.empty() && (!m_isKept || m_size == 0)) {
        unlink(m_temporary.c_str());
    }
}

std::string ArrivingFile::part(std::int64_t offset, std::size_t count) const
{
    std::string bytes(count, '\0');
    const ssize_t got = pread(m_descriptor.get(), bytes.data(), count, offset);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

void ArrivingFile::startOver()
{
    if (!m_temporary.empty() && ftruncate(m_descriptor.get(), 0) != 0) {
        fail(errno);
    }
    m_size = 0;
}

bool ArrivingFile::write(const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = m_temporary.empty() ? ::write(m_descriptor.get(), bytes, count)
                                                    : ::pwrite(m_descriptor.get(), bytes, count, m_size);
        if (written < 0 && errno == EAGAIN) {
            requireCall();
            pollfd room = {m_descriptor.get(), POLLOUT, 0};
            poll(&room, 1, static_cast<int>(kLook.count()));
        } else if (written < 0 && errno != EINTR) {
            fail(errno);
        }
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
            m_size += written;
        }
    }
    return true;
}

void ArrivingFile::takePlace(bool syncs)
{
    if (m_temporary.empty()) {
        return;
    }
    if (m_replaced) {
        // The owner, if permitted, and then the mode, because changing the owner clears some of its bits.
        const bool hasOwner = fchown(m_descriptor.get(), m_replaced->st_uid, m_replaced->st_gid) == 0;
        static_cast<void>(fchmod(m_descriptor.get(), modeAs(m_replaced->st_mode, hasOwner)));
    }
    const bool isWritten = syncs ? fsync(m_descriptor.get()) == 0 : closesWell(m_descriptor.get());
    if (!isWritten || rename(m_temporary.c_str(), m_path.c_str()) != 0) {
        fail(errno);
    }
    m_temporary.clear();
    if (syncs) {
        saveFolder(m_path);
    }
}

} // namespace session
