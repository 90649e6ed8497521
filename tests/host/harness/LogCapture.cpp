#include "harness/LogCapture.h"

#include <HostLog.h>

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace {

// A 0 stands for any digit, the "+" for a "-" as well.
constexpr char kTimeShape[] = "0000-00-00T00:00:00.000+00:00";

bool fits(char character, char shape)
{
    if (shape == '0') {
        return character >= '0' && character <= '9';
    }
    return character == shape || (shape == '+' && character == '-');
}

bool isTime(const std::string& word)
{
    const std::string shape = kTimeShape;
    return std::equal(word.begin(), word.end(), shape.begin(), shape.end(), fits);
}

} // namespace

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

std::string replaceTimes(const std::string& log)
{
    std::string replaced;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::string::size_type blank = line.find(' ');
        replaced.append(blank != std::string::npos && isTime(line.substr(0, blank)) ? "TIME" + line.substr(blank)
                                                                                    : line);
        replaced.append(lines.eof() ? "" : "\n");
    }
    return replaced;
}
