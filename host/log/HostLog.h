#ifndef SFTPCLIENT_HOST_HOSTLOG_H
#define SFTPCLIENT_HOST_HOSTLOG_H

#include "DescriptorSink.h"
#include "HostLogSettings.h"
#include "LogRecord.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>

namespace spdlog {
class formatter;
} // namespace spdlog

class LogFile;

/// The log of the ready host services. At first it goes to standard error, has all records, and one line of text for
/// each.
///
/// Any number of threads may use it at the same time; each record is written whole or is lost. When a record is lost,
/// because its place is full or closed or memory is out, standard error gets one line that says so; of the records lost
/// after it there is none, but the log itself gets one record that counts them all as soon as it can be written to
/// again.
///
/// A child of `fork` may log too, whatever the threads of its parent did meanwhile. `fork` waits for the record that is
/// being written.
class HostLog
{
public:
    /// The process's log. It is there until the process ends, for records may come from static objects' destructors.
    static HostLog& instance() noexcept;

    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;

    /// Makes the settings those of every record from now on. Throws `std::runtime_error`, whose text names the file,
    /// when it cannot be opened for writing; the log is then what it was before.
    void apply(const HostLogSettings& settings);

    /// Writes one record, if its level is high enough.
    void write(const LogRecord& record) noexcept;

    /// Counts a record that could not even be made, and says so as described above. `why` is a word or two.
    void countLost(const char* why) noexcept;

    /// What goes to standard error goes to `descriptor` from now on. It stays the caller's and must be open as long as
    /// it is used. Where the log goes to a file, that stays so.
    void setDescriptor(int descriptor);

    /// Leaves out, from now on, every record that is no failure.
    void setFailuresOnly();

private:
    HostLog() noexcept;
    ~HostLog();

    static void lock();
    static void unlock();
    void writeLine(const LogRecord& record);
    void tellWhatWasLost();
    void lose(const char* why) noexcept;

    std::atomic<LogLevel> m_level{LogLevel::Debug};
    std::mutex m_mutex; // for all that follows
    LogFormat m_format = LogFormat::Text;
    std::unique_ptr<spdlog::formatter> m_formatter; // of m_format; null until the first record
    std::unique_ptr<LogFile> m_file;                // null: standard error
    DescriptorSink m_standardError;
    std::size_t m_lost = 0;
    std::array<char, 256> m_whyLost = {};
};

#endif
