#ifndef SFTPCLIENT_CLI_OUTPUT_RESULTLINE_H
#define SFTPCLIENT_CLI_OUTPUT_RESULTLINE_H

#include "base/Result.h"

#include <string>

/// "put: 25 Failed FTP upload (the server's last reply: 552 Quota exceeded)", with control bytes escaped and without an
/// end.
std::string lineOf(const Result& result);

/// `text`, and what the server replied, unless that is empty.
std::string withReply(const std::string& text, const std::string& reply);

#endif
