#ifndef SFTPCLIENT_CLI_BASE_CHECKS_H
#define SFTPCLIENT_CLI_BASE_CHECKS_H

#include <string>

/// Whether a name is that of an entry of its directory: not empty, ".", "..", nor with a "/" or a zero byte.
bool isPlainName(const std::string& name);

bool holdsControlByte(const std::string& text);

/// What goes to the server must not break its command lines. Each throws `UsageError`, naming `what`, but never the
/// text itself: it may be a password.

void refuseControlBytes(const std::string& what, const std::string& text);

/// Not empty, no control byte.
void refuseAllButAName(const std::string& what, const std::string& text);

/// A name that becomes a word of a command: not empty, no blank, no control byte.
void refuseAllButOneWord(const std::string& what, const std::string& text);

#endif
