#ifndef SFTPCLIENT_TESTS_HOST_LOGCAPTURE_H
#define SFTPCLIENT_TESTS_HOST_LOGCAPTURE_H

#include "harness/LogShape.h"

#include <cstdio>
#include <memory>
#include <string>

/// Catches what the host's log writes to standard error as long as this object lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Where the log goes.
    int descriptor() const { return fileno(m_file.get()); }

    /// All that was written so far.
    std::string text() const;

    /// The same, with each line's time replaced by "TIME".
    std::string withoutTimes() const;

private:
    struct Close
    {
        void operator()(FILE* file) const { static_cast<void>(std::fclose(file)); }
    };
    std::unique_ptr<FILE, Close> m_file;
};

#endif
