#ifndef SFTPCLIENT_CLI_OUTPUT_RESULTNAME_H
#define SFTPCLIENT_CLI_OUTPUT_RESULTNAME_H

#include <string>

/// libcurl's name for a result code, "CURLE_LOGIN_DENIED" for 67; "CURLE_" and the number for one that libcurl 7.88
/// does not use; "LIBRARY_FAILURE" for -1, which is the library's own.
std::string nameOfResult(int code);

#endif
