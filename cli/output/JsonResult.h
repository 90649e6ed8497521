#ifndef SFTPCLIENT_CLI_OUTPUT_JSONRESULT_H
#define SFTPCLIENT_CLI_OUTPUT_JSONRESULT_H

#include "base/Result.h"

#include <string>
#include <string_view>

/// Whether it is valid UTF-8.
bool isText(std::string_view name);

/// One JSON object on one line, in ASCII. Bytes that are no UTF-8 are replaced by U+FFFD; where that
/// happens to a name, it stands there percent-encoded, too.
std::string jsonOf(const Result& result);

#endif
