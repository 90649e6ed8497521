#ifndef SFTPCLIENT_HOST_ESCAPECONTROLBYTES_H
#define SFTPCLIENT_HOST_ESCAPECONTROLBYTES_H

#include <string>
#include <string_view>

/// `text` made safe for one line of a log or a terminal: control characters, bytes that are no UTF-8 (a terminal may
/// take some of them for control characters), and the backslash that marks both, are written as \n, \r, \t, \\ or \xNN.
/// Everything else stays.
std::string escapeControlBytes(std::string_view text);

#endif
