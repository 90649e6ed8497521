#include "ArrivingFile.h"

#include "Failure.h"
#include "Text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace session {

namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path, int error = errno)
{
    throw refusal(CURLE_WRITE_ERROR,
                  "localPath " + path + " cannot be " + what + ": " + std::generic_category().message(error));
}

// A link's own place would be taken, not that of what it leads to.
std::string withoutLinks(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

std::string folderOf(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Else the new name could be lost when the machine goes down, and the old file with it.
void saveFolder(const std::string& path)
{
    const int folder = open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        static_cast<void>(fsync(folder));
        close(folder);
    }
}

} // namespace

ArrivingFile::ArrivingFile(const std::string& path) : m_path(withoutLinks(path))
{
    struct stat there = {};
    const bool exists = stat(m_path.c_str(), &there) == 0;
    if (exists && S_ISDIR(there.st_mode)) {
        fail("written", path, EISDIR);
    }
    if (exists && !S_ISREG(there.st_mode)) {
        m_descriptor = open(m_path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        if (exists && access(m_path.c_str(), W_OK) != 0) {
            fail("written", path);
        }
        // Its owner and mode are those of the file that it replaces, as far as may be; else as for any new file.
        const std::string::size_type name = m_path.rfind('/') + 1;
        for (unsigned i = 0; m_descriptor < 0 && (i == 0 || errno == EEXIST); ++i) {
            m_temporary = m_path.substr(0, name) +
                          hiddenName(m_path.substr(name), std::to_string(getpid()) + "." + std::to_string(i) + ".part");
            m_descriptor = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        }
    }
    if (m_descriptor < 0) {
        m_temporary.clear();
        fail("written", path);
    }
    if (exists && !m_temporary.empty()) {
        static_cast<void>(fchown(m_descriptor, there.st_uid, there.st_gid) == 0);
        static_cast<void>(fchmod(m_descriptor, there.st_mode & 07777));
    }
}

ArrivingFile::~ArrivingFile()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    if (!m_temporary.empty()) {
        unlink(m_temporary.c_str());
    }
}

bool ArrivingFile::write(const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = ::write(m_descriptor, bytes, count);
        if (written < 0 && errno != EINTR) {
            fail("written", m_path);
        }
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

void ArrivingFile::takePlace()
{
    if (m_temporary.empty()) {
        return;
    }
    if (fsync(m_descriptor) != 0 || rename(m_temporary.c_str(), m_path.c_str()) != 0) {
        fail("written", m_path);
    }
    m_temporary.clear();
    saveFolder(m_path);
}

} // namespace session
