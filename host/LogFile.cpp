#include "LogFile.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

class LogFile::Rotation
{
public:
    Rotation(const std::string& path, std::size_t maxBytes, std::size_t olderFiles,
             const spdlog::file_event_handlers& handlers)
        : m_sink(path, maxBytes, olderFiles, false, handlers)
    {
        m_sink.set_formatter(
            std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, std::string()));
    }

    void write(std::string_view line)
    {
        m_sink.log({std::string_view(), spdlog::level::info, spdlog::string_view_t(line.data(), line.size())});
    }

private:
    spdlog::sinks::rotating_file_sink_st m_sink;
};

namespace {

// spdlog tries five times to open a file and sleeps in between: it is asked only where it will succeed.
void requireOpenable(const std::string& path)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    ::close(descriptor);
}

} // namespace

LogFile::LogFile(const std::string& path, std::size_t maxBytes, std::size_t files)
    : m_path(std::filesystem::absolute(path)), m_maxBytes(maxBytes), m_files(files)
{
    open();
}

LogFile::~LogFile() = default;

void LogFile::open()
{
    m_rotation.reset();
    requireOpenable(m_path);
    spdlog::file_event_handlers handlers;
    handlers.after_open = [this](const spdlog::filename_t&, std::FILE* stream) { adopt(stream); };
    handlers.after_close = [this](const spdlog::filename_t&) { m_stream = nullptr; };
    m_rotation = std::make_unique<Rotation>(m_path, m_maxBytes, m_files - 1, handlers);
}

// Without a buffer each line is one system call, and its failure is seen at once.
void LogFile::adopt(std::FILE* stream)
{
    m_stream = stream;
    m_size = 0;
    static_cast<void>(std::setvbuf(stream, nullptr, _IONBF, 0));
    static_cast<void>(::fcntl(::fileno(stream), F_SETFD, FD_CLOEXEC));
}

void LogFile::write(std::string_view line)
{
    // After a rotation that failed, spdlog would write to a file that it has closed.
    if (m_stream == nullptr || !isThere()) {
        open();
        isThere();
    }
    try {
        m_rotation->write(line);
    } catch (...) {
        cutBack();
        throw;
    }
}

bool LogFile::isThere()
{
    struct stat status = {};
    if (::fstat(::fileno(m_stream), &status) != 0) {
        return false;
    }
    m_size = status.st_size;
    return status.st_nlink > 0;
}

// What was written of a line before the disk was full.
void LogFile::cutBack() const
{
    if (m_stream != nullptr) {
        [[maybe_unused]] const int nothingToDoAboutIt = ::ftruncate(::fileno(m_stream), m_size);
    }
}
