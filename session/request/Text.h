#ifndef SFTPCLIENT_SESSION_TEXT_H
#define SFTPCLIENT_SESSION_TEXT_H

#include <SFtpRequest.h>

#include <string>
#include <string_view>

namespace session {

/// Whether `text` holds a byte below 0x20 or 0x7f: to a server it could begin another command.
bool holdsControlByte(std::string_view text);

/// `text` for a log or an error text: control bytes as \xNN, and "****" in place of `secret`.
std::string shown(std::string_view text, const std::string& secret);

/// The URL of a request, for a log: without a login that may stand in it.
std::string shownUrl(const SFtpRequest& request);

/// `text` with %XX in place of each byte but letters, digits and "-._~".
std::string percentEncoded(std::string_view text);

/// Two digits for each byte.
std::string inHex(std::string_view bytes);

/// A path for libcurl's SFTP commands: in double quotes, in which a backslash stands before what would end them.
std::string quoted(const std::string& path);

/// ".NAME.MIDDLE", a name for what is not yet `name`, beside it. Cut where it would be longer than file systems allow.
std::string hiddenName(const std::string& name, const std::string& middle);

} // namespace session

#endif
