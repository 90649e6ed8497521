#include "LogFile.h"

#include "WithoutWriteSignals.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace {

[[noreturn]] void throwError(int error, const std::string& what)
{
    throw std::system_error(error, std::generic_category(), what);
}

// Others may not read it: its records tell users' names and paths.
constexpr mode_t kMode = 0640;

// Without waiting: a FIFO would wait for its reader, and every thread that logs with it. One without a reader is ENXIO.
int openForAdding(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, kMode);
    if (descriptor < 0 && errno != ENXIO) {
        throwError(errno, path);
    }
    return descriptor;
}

struct stat statusOf(int descriptor, const std::string& path)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        throwError(errno, path);
    }
    return status;
}

// A path that may not be looked at, as after giving up root's rights, counts as unchanged.
bool leadsElsewhere(const std::string& path, const struct stat& file)
{
    struct stat there = {};
    if (::stat(path.c_str(), &there) != 0) {
        return errno == ENOENT || errno == ENOTDIR;
    }
    return there.st_dev != file.st_dev || there.st_ino != file.st_ino;
}

// "a.log", "a.1.log", "a.2.log"
std::string olderName(const std::filesystem::path& path, std::size_t number)
{
    const std::string end = number == 0 ? "" : "." + std::to_string(number);
    return path.parent_path() / (path.stem().string() + end + path.extension().string());
}

} // namespace

LogFile::Descriptor::~Descriptor() { reset(-1); }

void LogFile::Descriptor::reset(int number)
{
    if (m_number >= 0) {
        ::close(m_number);
    }
    m_number = number;
}

LogFile::LogFile(const std::string& path, std::size_t maxBytes, std::size_t files)
    : m_path(std::filesystem::absolute(path)), m_maxBytes(maxBytes), m_files(files)
{
    open();
}

LogFile::~LogFile() = default;

void LogFile::write(std::string_view line)
{
    off_t size = sizeInPlace();
    if (size > 0 && static_cast<std::size_t>(size) + line.size() > m_maxBytes) {
        giveWay();
        size = sizeInPlace();
    }
    append(line, size);
}

void LogFile::open()
{
    std::filesystem::create_directories(std::filesystem::path(m_path).parent_path());
    m_file.reset(openForAdding(m_path));
    if (m_file.number() < 0 || !S_ISREG(statusOf(m_file.number(), m_path).st_mode)) {
        m_file.reset(-1);
        throw std::runtime_error(m_path + " is not a regular file. Remove it, or name another file");
    }
}

// The size of the file that has the name now, which is open then.
off_t LogFile::sizeInPlace()
{
    if (m_file.number() >= 0) {
        const struct stat status = statusOf(m_file.number(), m_path);
        if (!leadsElsewhere(m_path, status)) {
            return status.st_size;
        }
    }
    open();
    return statusOf(m_file.number(), m_path).st_size;
}

// Where nothing can be renamed the file is emptied: a log must not fill the disk. Where memory is out there is another
// time.
void LogFile::giveWay()
try {
    if (m_files == 1) {
        empty();
    }
    shiftNames();
} catch (const std::system_error&) {
    empty();
    throw;
}

void LogFile::empty() const { [[maybe_unused]] const int nothingToDoAboutIt = ::ftruncate(m_file.number(), 0); }

void LogFile::shiftNames() const
{
    for (std::size_t number = m_files - 1; number > 0; --number) {
        const std::string from = olderName(m_path, number - 1);
        const std::string to = olderName(m_path, number);
        if (std::rename(from.c_str(), to.c_str()) != 0 && errno != ENOENT) {
            const int error = errno;
            throwError(error, std::string(m_path)
                                  .append(" is emptied because ")
                                  .append(from)
                                  .append(" cannot be renamed to ")
                                  .append(to));
        }
    }
}

void LogFile::append(std::string_view line, off_t size) const
{
    const WithoutWriteSignals withoutSignals;
    while (!line.empty()) {
        const ssize_t written = ::write(m_file.number(), line.data(), line.size());
        if (written >= 0) {
            line.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            const int error = errno;
            withoutSignals.discard(error);
            [[maybe_unused]] const int nothingToDoAboutIt = ::ftruncate(m_file.number(), size);
            throwError(error, m_path);
        }
    }
}
