#ifndef SUPPORT_LOGCAPTURE_H
#define SUPPORT_LOGCAPTURE_H

#include "support/LogShape.h"
#include "support/UnnamedFile.h"

#include <HostLog.h>

#include <unistd.h>

#include <string>

/// Catches what the host's log writes to standard error as long as this object lives.
class LogCapture
{
public:
    LogCapture() { HostLog::instance().setDescriptor(descriptor()); }
    ~LogCapture() { HostLog::instance().setDescriptor(STDERR_FILENO); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Where the log goes.
    int descriptor() const { return m_file.descriptor(); }

    /// All that was written so far.
    std::string text() const { return m_file.content(); }

    /// The same, with each line's time replaced by "TIME".
    std::string withoutTimes() const { return replaceTimes(text()); }

private:
    UnnamedFile m_file;
};

#endif
