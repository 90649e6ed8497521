#include "HostLog.h"

#include "LogFile.h"

#include <pthread.h>
#include <spdlog/pattern_formatter.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace {

LogLevel levelOf(const LogRecord& record)
{
    switch (record.level) {
    case 1:
        return LogLevel::Debug;
    case 2:
        return LogLevel::Info;
    default:
        return LogLevel::Error;
    }
}

spdlog::level::level_enum spdlogLevel(LogLevel level)
{
    switch (level) {
    case LogLevel::Debug:
        return spdlog::level::debug;
    case LogLevel::Info:
        return spdlog::level::info;
    default:
        return spdlog::level::err;
    }
}

// In place of spdlog's %z, which keeps a zone for ten seconds, also past the end of summer time.
class Zone : public spdlog::custom_flag_formatter
{
public:
    void format(const spdlog::details::log_msg& /*record*/, const std::tm& time, spdlog::memory_buf_t& line) override
    {
        const long minutes = std::labs(time.tm_gmtoff) / 60;
        std::array<char, 32> text = {};
        const int length = std::snprintf(text.data(), text.size(), "%c%02ld:%02ld", time.tm_gmtoff < 0 ? '-' : '+',
                                         minutes / 60, minutes % 60);
        line.append(text.data(), text.data() + length);
    }

    std::unique_ptr<spdlog::custom_flag_formatter> clone() const override { return std::make_unique<Zone>(); }
};

std::unique_ptr<spdlog::formatter> formatterFor(LogFormat format)
{
    spdlog::pattern_formatter::custom_flags flags;
    flags['*'] = std::make_unique<Zone>();
    const bool json = format == LogFormat::Json;
    return std::make_unique<spdlog::pattern_formatter>(json ? R"({"time":"%Y-%m-%dT%H:%M:%S.%e%*","level":"%l",%v})"
                                                            : "%Y-%m-%dT%H:%M:%S.%e%* %l %v",
                                                       spdlog::pattern_time_type::local, "\n", std::move(flags));
}

std::unique_ptr<LogFile> openFile(const HostLogSettings& settings)
try {
    if (settings.file.empty()) {
        return nullptr;
    }
    return std::make_unique<LogFile>(settings.file, settings.maxBytes, settings.files);
} catch (const std::system_error& error) {
    throw std::runtime_error("The log cannot be written to " + settings.file + ": " + error.what() +
                             ". Name another file, or make this one writable.");
} catch (const std::exception& error) {
    throw std::runtime_error("The log cannot be written to " + settings.file + ": " + error.what() + ".");
}

// Made when the process is loaded: no fork can come in between then.
[[maybe_unused]] const HostLog& made = HostLog::instance();

} // namespace

HostLog& HostLog::instance() noexcept
{
    // Never destroyed, and not on the heap: it must also be there to say that memory is out.
    alignas(HostLog) static std::array<std::byte, sizeof(HostLog)> place;
    static HostLog* const log = new (place.data()) HostLog;
    return *log;
}

// A child of fork has one thread, and would wait for ever for a mutex that another one held.
HostLog::HostLog() noexcept { static_cast<void>(pthread_atfork(lock, unlock, unlock)); }

HostLog::~HostLog() = default;

void HostLog::lock() { instance().m_mutex.lock(); }

void HostLog::unlock() { instance().m_mutex.unlock(); }

void HostLog::apply(const HostLogSettings& settings)
{
    std::unique_ptr<LogFile> file = openFile(settings);
    std::unique_ptr<spdlog::formatter> formatter = formatterFor(settings.format);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_level = settings.level;
    m_format = settings.format;
    m_formatter = std::move(formatter);
    m_file = std::move(file);
}

void HostLog::write(const LogRecord& record) noexcept
{
    if (levelOf(record) < m_level) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    try {
        tellWhatWasLost();
        writeLine(record);
    } catch (const std::bad_alloc&) {
        lose("out of memory");
    } catch (const std::exception& error) {
        lose(error.what());
    }
}

void HostLog::countLost(const char* why) noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    lose(why);
}

void HostLog::setDescriptor(int descriptor)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_standardError.setDescriptor(descriptor);
}

void HostLog::setFailuresOnly() { m_level = LogLevel::Error; }

void HostLog::writeLine(const LogRecord& record)
{
    if (!m_formatter) {
        m_formatter = formatterFor(m_format);
    }
    const std::string text = m_format == LogFormat::Json ? asJson(record) : asText(record);
    spdlog::memory_buf_t line;
    m_formatter->format({spdlog::string_view_t(), spdlogLevel(levelOf(record)), text}, line);
    if (m_file) {
        m_file->write({line.data(), line.size()});
    } else {
        m_standardError.write({line.data(), line.size()});
    }
}

void HostLog::tellWhatWasLost()
{
    if (m_lost > 0) {
        const std::string text = "log records lost: " + std::to_string(m_lost) + " (" + m_whyLost.data() + ")";
        writeLine({static_cast<int>(LogLevel::Error), "SFtpClientHost", 0, "HostLog::write()", __LINE__, text});
        m_lost = 0;
    }
}

// Without memory of its own, for that may be what is missing.
void HostLog::lose(const char* why) noexcept
{
    if (++m_lost > 1) {
        return;
    }
    static_cast<void>(std::snprintf(m_whyLost.data(), m_whyLost.size(), "%s", why));
    std::array<char, 320> line = {};
    const int length = std::snprintf(line.data(), line.size(), "Log records are being lost: %s\n", m_whyLost.data());
    try {
        m_standardError.write({line.data(), static_cast<std::size_t>(length)});
    } catch (const std::exception&) {
        return;
    }
}
