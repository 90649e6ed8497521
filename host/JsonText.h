#ifndef SFTPCLIENT_HOST_JSONTEXT_H
#define SFTPCLIENT_HOST_JSONTEXT_H

#include <string>
#include <string_view>

/// `text` as a JSON string, quotes included. Control characters are escaped, those that JSON would let pass (U+007F to
/// U+009F) as well. JSON cannot hold a byte that is no UTF-8: U+FFFD, the replacement character, stands for each.
std::string jsonText(std::string_view text);

#endif
