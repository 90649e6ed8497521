#include "call/Failure.h"
#include "files/LocalFiles.h"
#include "request/Digest.h"
#include "request/Text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace session {

namespace {

Failure failure(const std::string& path, const std::string& why)
{
    return refusal(CURLE_READ_ERROR, "localPath " + shown(path, {}) + " cannot be sent: " + why);
}

} // namespace

// Non-blocking: a pipe without a writer would hold the call for ever.
LeavingFile::LeavingFile(const std::string& path)
    : m_path(path), m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    if (!m_descriptor.isOpen()) {
        throw failure(path, std::generic_category().message(errno));
    }
    struct stat status = {};
    if (fstat(m_descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw failure(path, "it is no regular file; UploadFrom sends from anything");
    }
    m_size = status.st_size;
}

std::size_t LeavingFile::read(char* bytes, std::size_t count) const
{
    for (;;) {
        const ssize_t got = ::read(m_descriptor.get(), bytes, count);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            throw failure(m_path, std::generic_category().message(errno));
        }
    }
}

bool LeavingFile::seek(std::int64_t offset) const noexcept
{
    return lseek(m_descriptor.get(), offset, SEEK_SET) == offset;
}

std::string LeavingFile::part(std::int64_t offset, std::size_t count) const
{
    std::string bytes(count, '\0');
    const ssize_t got = pread(m_descriptor.get(), bytes.data(), count, offset);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

std::string LeavingFile::version() const
{
    std::array<char, 256> machine = {};
    static_cast<void>(gethostname(machine.data(), machine.size() - 1) == 0);
    struct stat status = {};
    fstat(m_descriptor.get(), &status);
    Digest digest;
    digest.add(machine.data());
    for (const auto number : {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
                              static_cast<std::uint64_t>(m_size), static_cast<std::uint64_t>(status.st_mtim.tv_sec),
                              static_cast<std::uint64_t>(status.st_mtim.tv_nsec)}) {
        digest.add(std::to_string(number));
    }
    return digest.value();
}

// On a file system without locks, the size on the server still reveals that two calls sent at once.
bool LeavingFile::lock() const { return flock(m_descriptor.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

} // namespace session
