#ifndef SFTPCLIENT_SESSION_TEXT_H
#define SFTPCLIENT_SESSION_TEXT_H

#include <string>
#include <string_view>

namespace session {

/// Whether `text` holds a byte below 0x20 or 0x7f: to a server it could begin another command.
bool holdsControlByte(std::string_view text);

/// `text` for a log or an error text: control bytes as \xNN, and "****" in place of `secret`.
std::string shown(std::string_view text, const std::string& secret);

/// `text` with %XX in place of each byte but letters, digits and "-._~".
std::string percentEncoded(std::string_view text);

} // namespace session

#endif
