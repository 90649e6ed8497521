#ifndef SFTPCLIENT_HOST_HOSTLOGSETTINGS_H
#define SFTPCLIENT_HOST_HOSTLOGSETTINGS_H

#include <cstddef>
#include <string>

class IniFile;

/// The least that a record must be to get into the log; the numbers are the records' levels.
enum class LogLevel
{
    Debug = 1, ///< every record
    Info = 2,  ///< ends of operations, and failures
    Error = 4  ///< failures only
};

/// What a record looks like in the log.
enum class LogFormat
{
    Text, ///< one line a record
    Json  ///< one JSON object a line
};

/// Where the log goes and what it looks like.
struct HostLogSettings
{
    std::string file;                   ///< empty: standard error
    LogLevel level = LogLevel::Debug;   ///< the least that gets in
    LogFormat format = LogFormat::Text; ///< what a record looks like
    std::size_t maxBytes = 10485760;    ///< a file is not made larger by a record, unless that one record is
    std::size_t files = 5;              ///< the one that is written to and the older ones together, at least 1
};

/// The settings of section `Log`: `Target` ("stderr" or a file), `Level` ("debug", "info" or "error"), `Format` ("text"
/// or "json"), `MaxBytes` and `Files`. What is missing is as above. Throws `std::runtime_error`, whose text names the
/// key and what it may be, for any other key or value.
HostLogSettings logSettingsFrom(const IniFile& values);

#endif
