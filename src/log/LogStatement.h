#ifndef SFTPCLIENT_LOG_LOGSTATEMENT_H
#define SFTPCLIENT_LOG_LOGSTATEMENT_H

#include "log/GetFunctionName.h"

#include <LogProxy.h>

#include <string>

/// Levels of a record. There are no others.
constexpr int kLogDetail = 1;
constexpr int kLogEnd = 2; // also the failed open of "/dev/null" in rename and delete
constexpr int kLogFailure = 4;

/// The module that every record names. Each source file has a copy of its own, for as long as the library is loaded.
static const std::string kModuleName("SFtpClient");

/// Opens a record of the calling thread. A function of its own so that the identifier is read after the arguments,
/// the function's name among them, have been made. Static, as the module's name is: each source file uses its own.
static inline LogProxy openRecord(int level, const std::string& function, unsigned int line)
{
    return LogProxy(level, kModuleName, TSP_RequestID.get(), function, line); // the host may declare it explicit
}

/// Opens a record that belongs to no request: it carries 0 and does not read the thread's identifier.
static inline LogProxy openRecordWithoutRequest(int level, const std::string& function, unsigned int line)
{
    return LogProxy(level, kModuleName, 0, function, line);
}

/// The enclosing function's short name. A macro, because only there does __PRETTY_FUNCTION__ name that function:
/// write no record in a lambda or a shared helper.
#define SFTP_FUNCTION_NAME GetFunctionName(std::string(__PRETTY_FUNCTION__))

/// Writes one record: SFTP_LOG(kLogFailure, "text" << number << text). Hosts know the 0 at the start and the empty
/// text at the end of every record. The message is a chain of insertions, so it stands without parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define SFTP_LOG(level, message)                                                                                       \
    static_cast<void>(openRecord(level, SFTP_FUNCTION_NAME, __LINE__) << 0 << message << "")

#define SFTP_LOG_WITHOUT_REQUEST(level, message)                                                                       \
    static_cast<void>(openRecordWithoutRequest(level, SFTP_FUNCTION_NAME, __LINE__) << 0 << message << "")
// NOLINTEND(bugprone-macro-parentheses)

#endif
