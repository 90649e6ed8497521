#ifndef SFTPCLIENT_CLI_BASE_PERCENTCODE_H
#define SFTPCLIENT_CLI_BASE_PERCENTCODE_H

#include <string>

/// `text` with the byte in place of each %XX. Throws `UsageError` for a "%" that begins none.
std::string percentDecoded(const std::string& text);

/// `text` with %XX in place of each byte but letters, digits and "-._~", which mean themselves anywhere in a URL.
std::string percentEncoded(const std::string& text);

#endif
