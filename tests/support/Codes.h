#ifndef SUPPORT_CODES_H
#define SUPPORT_CODES_H

#include <string>

/// libcurl's name for a result code, "CURLE_LOGIN_DENIED" for 67, and a unique text for each other number: what
/// tests compare, so that a failure says which code came.
std::string nameOf(int code);

#endif
