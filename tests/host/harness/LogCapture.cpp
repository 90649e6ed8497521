#include "harness/LogCapture.h"

#include <HostLog.h>

#include <sys/types.h>
#include <unistd.h>

#include <stdexcept>

LogCapture::LogCapture() : m_file(std::tmpfile())
{
    if (!m_file) {
        throw std::runtime_error("no temporary file for the log");
    }
    HostLog::instance().setDescriptor(fileno(m_file.get()));
}

LogCapture::~LogCapture() { HostLog::instance().setDescriptor(STDERR_FILENO); }

std::string LogCapture::text() const
{
    std::string text;
    char block[4096];
    for (;;) {
        const ssize_t count = pread(fileno(m_file.get()), block, sizeof block, static_cast<off_t>(text.size()));
        if (count <= 0) {
            return text;
        }
        text.append(block, static_cast<size_t>(count));
    }
}

std::string LogCapture::withoutTimes() const { return replaceTimes(text()); }
