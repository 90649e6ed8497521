#include "HostLog.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <mutex>

/// Writes each line with one system call, so that it also stays whole among what other processes write to a pipe.
class DescriptorSink : public spdlog::sinks::base_sink<std::mutex>
{
public:
    void setDescriptor(int descriptor)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        m_descriptor = descriptor;
    }

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        writeAll(line.data(), line.size());
    }

    void flush_() override {}

private:
    void writeAll(const char* data, size_t size) const
    {
        while (size > 0) {
            const ssize_t written = ::write(m_descriptor, data, size);
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                return;
            }
            data += written;
            size -= static_cast<size_t>(written);
        }
    }

    int m_descriptor = STDERR_FILENO;
};

namespace {

spdlog::level::level_enum spdlogLevel(int level)
{
    switch (level) {
    case 1:
        return spdlog::level::debug;
    case 2:
        return spdlog::level::info;
    default:
        return spdlog::level::err;
    }
}

} // namespace

HostLog& HostLog::instance()
{
    static HostLog* const log = new HostLog;
    return *log;
}

HostLog::HostLog()
    : m_sink(std::make_shared<DescriptorSink>()), m_logger(std::make_unique<spdlog::logger>("host", m_sink))
{
    m_logger->set_level(spdlog::level::debug);
    m_logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %l %v");
    m_logger->set_error_handler([](const std::string&) { reportLostRecord(); });
}

HostLog::~HostLog() = default;

void HostLog::write(int level, const std::string& text) { m_logger->log(spdlogLevel(level), text); }

void HostLog::setDescriptor(int descriptor) { m_sink->setDescriptor(descriptor); }

void HostLog::setFailuresOnly() { m_logger->set_level(spdlog::level::err); }

void HostLog::reportLostRecord() noexcept
{
    static_cast<void>(std::fputs("A log record was lost: out of memory.\n", stderr));
}
