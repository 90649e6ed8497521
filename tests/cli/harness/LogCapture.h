#ifndef SFTPCLIENT_TESTS_CLI_LOGCAPTURE_H
#define SFTPCLIENT_TESTS_CLI_LOGCAPTURE_H

#include <cstdio>
#include <memory>
#include <string>

/// How a record's time looks.
constexpr char kTimePattern[] =
    R"([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}[+-][0-9]{2}:[0-9]{2})";

/// Catches what the host's log writes as long as this object lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

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

/// `log` with each line's time replaced by "TIME".
std::string replaceTimes(const std::string& log);

#endif
