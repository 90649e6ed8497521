#ifndef SFTPCLIENT_HOST_ESCAPECONTROLBYTES_H
#define SFTPCLIENT_HOST_ESCAPECONTROLBYTES_H

#include <string>

/// `text` made safe for one line of a log or a terminal: control characters, and the backslash that marks them, are
/// written as \n, \r, \t, \\ or \xNN. Everything else, UTF-8 included, stays.
std::string escapeControlBytes(const std::string& text);

#endif
