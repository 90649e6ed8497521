#ifndef SFTPCLIENT_SESSION_RECORD_H
#define SFTPCLIENT_SESSION_RECORD_H

#include <LogProxy.h>

#include <string>

namespace session {

/// Levels of a record, as the library's.
constexpr int kLogEnd = 2;
constexpr int kLogFailure = 4;

/// Writes one record of the calling thread's request; like the library's, its text begins with a 0.
inline void record(int level, const std::string& function, unsigned int line, const std::string& text)
{
    LogProxy(level, "SFtpSession", TSP_RequestID.get(), function, line) << 0 << text;
}

} // namespace session

#endif
