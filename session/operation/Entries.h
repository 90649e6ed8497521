#ifndef SFTPCLIENT_SESSION_ENTRIES_H
#define SFTPCLIENT_SESSION_ENTRIES_H

#include <SFtpSession.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace session {

/// The entry that a line of MLSD or MLST tells ("type=file;size=5;modify=20260101000000; name"); nothing for the
/// directory itself, its parent, and what is no such line.
std::optional<RemoteEntry> entryOfFacts(std::string_view line);

/// The entry that a line of a listing as "ls -l" writes it tells; nothing for "." and "..", and what is no such line.
/// Without a time: it would be the server's own, and nobody says which zone that is.
std::optional<RemoteEntry> entryOfLongLine(std::string_view line);

/// Whether a name is one of the directory's own: with a "/" or a zero byte, a path made of it would end elsewhere.
bool leadsNowhereElse(std::string_view name);

/// The time that "YYYYMMDDhhmmss" tells, perhaps with a fraction of a second behind it; UTC.
std::optional<std::chrono::system_clock::time_point> timeIn(std::string_view text);

std::string lowerCase(std::string_view text);

/// So many seconds after the beginning of 1970; nothing where the clock does not reach that far.
std::optional<std::chrono::system_clock::time_point> timeAt(std::int64_t seconds);

} // namespace session

#endif
