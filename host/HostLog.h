#ifndef SFTPCLIENT_HOST_HOSTLOG_H
#define SFTPCLIENT_HOST_HOSTLOG_H

#include <memory>
#include <string>

namespace spdlog {
class logger;
} // namespace spdlog

class DescriptorSink;

/// The log of the ready host services: one line a record, with its time and level, on standard error.
///
/// Any number of threads may use it at the same time; each line is written whole. What cannot be written is lost.
class HostLog
{
public:
    /// The process's log. It is there until the process ends, for records may come from static objects' destructors.
    static HostLog& instance();

    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;

    /// Writes one line. `level` is a record's: 1 "debug", 2 "info"; 4, or a number that has no meaning, "error".
    /// REQUIRES: no control bytes in `text`.
    void write(int level, const std::string& text);

    /// Sends the lines that follow to `descriptor`, which stays the caller's and must be open as long as it is used.
    void setDescriptor(int descriptor);

    /// Leaves out, from now on, every record that is no failure.
    void setFailuresOnly();

    /// Says on standard error that memory ran out while a record was being written.
    static void reportLostRecord() noexcept;

private:
    HostLog();
    ~HostLog();

    std::shared_ptr<DescriptorSink> m_sink;
    std::unique_ptr<spdlog::logger> m_logger;
};

#endif
