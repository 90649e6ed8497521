#ifndef SFTPCLIENT_HOST_UTF8_H
#define SFTPCLIENT_HOST_UTF8_H

#include <cstddef>
#include <string_view>

/// How many bytes the UTF-8 character at the beginning of `text` has, or 0 when none begins there.
std::size_t utf8Length(std::string_view text);

/// Whether `character`, one of UTF-8, is a control character: U+0000 to U+001F and U+007F to U+009F. Terminals obey
/// the last 32 as they obey escape sequences.
bool isControl(std::string_view character);

#endif
