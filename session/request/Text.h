#ifndef SFTPCLIENT_SESSION_TEXT_H
#define SFTPCLIENT_SESSION_TEXT_H

#include <SFtpRequest.h>

#include <string>
#include <string_view>

namespace session {

/// Whether `text` contains 0x7f or a byte below 0x20, which could begin another command.
bool holdsControlByte(std::string_view text);

/// `text` for a log or an error text: control bytes as \xNN, and `secret` replaced by "****".
std::string shown(std::string_view text, const std::string& secret);

/// The URL of a request, for a log: without any login in it.
std::string shownUrl(const SFtpRequest& request);

/// `text` with each byte except letters, digits and "-._~" as %XX.
std::string percentEncoded(std::string_view text);

/// Two hexadecimal digits per byte.
std::string inHex(std::string_view bytes);

/// A path for libcurl's SFTP commands: in double quotes, with quotes and backslashes escaped.
std::string quoted(const std::string& path);

/// ".NAME.MIDDLE", the temporary name of what will become `name`. Cut to the length that file systems allow.
std::string hiddenName(const std::string& name, const std::string& middle);

} // namespace session

#endif
