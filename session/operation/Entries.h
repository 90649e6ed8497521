#ifndef SFTPCLIENT_SESSION_ENTRIES_H
#define SFTPCLIENT_SESSION_ENTRIES_H

#include <SFtpSession.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace session {

/// The entry in a line of MLSD or MLST ("type=file;size=5;modify=20260101000000; name"); nothing for the directory
/// itself, its parent, and any other line.
std::optional<RemoteEntry> entryOfFacts(std::string_view line);

/// The entry in a line of a listing in the format of "ls -l"; nothing for ".", "..", and any other line.
/// Without a time, because the listing does not say which time zone it uses.
std::optional<RemoteEntry> entryOfLongLine(std::string_view line);

/// Whether a line that is no entry may be in a listing in a format that is known: an empty one, the sum ("total 12"),
/// that of the directory itself or its parent.
bool tellsNothing(std::string_view line);

/// Whether a line of MLSD tells an entry's type, but not, as it should, a name behind the last semicolon.
bool looksLikeFacts(std::string_view line);

/// Whether a line of a listing begins as an entry does in the format of "ls -l", or in that of Windows, with a date;
/// not for "." and "..". The second half of a name with a line break does not, as a rule.
bool looksLikeEntry(std::string_view line);

/// Whether a name can be that of an entry: with a "/" or a zero byte, a path made from it would lead elsewhere.
bool leadsNowhereElse(std::string_view name);

/// The time in "YYYYMMDDhhmmss", UTC, with an optional fraction of a second.
std::optional<std::chrono::system_clock::time_point> timeIn(std::string_view text);

std::string lowerCase(std::string_view text);

/// So many seconds after 1970-01-01 00:00 UTC; nothing if the clock cannot represent that.
std::optional<std::chrono::system_clock::time_point> timeAt(std::int64_t seconds);

} // namespace session

#endif
