#include "LeavingFile.h"

#include "Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace session {

namespace {

Failure failure(const std::string& path, const std::string& why)
{
    return refusal(CURLE_READ_ERROR, "localPath " + path + " cannot be sent: " + why);
}

} // namespace

// Without waiting: a pipe that nobody writes to would hold the call for ever.
LeavingFile::LeavingFile(const std::string& path)
    : m_path(path), m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    if (m_descriptor < 0) {
        throw failure(path, std::generic_category().message(errno));
    }
    struct stat status = {};
    if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(m_descriptor);
        throw failure(path, "it is no regular file; UploadFrom sends from anything");
    }
    m_size = status.st_size;
}

LeavingFile::~LeavingFile() { close(m_descriptor); }

std::size_t LeavingFile::read(char* bytes, std::size_t count) const
{
    for (;;) {
        const ssize_t got = ::read(m_descriptor, bytes, count);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            throw failure(m_path, std::generic_category().message(errno));
        }
    }
}

} // namespace session
