#ifndef SFTPCLIENT_CLI_BASE_REQUESTOF_H
#define SFTPCLIENT_CLI_BASE_REQUESTOF_H

#include "base/Arguments.h"

#include <SFtpRequest.h>

/// The library's request for what the command line said, still without the login. Throws `UsageError` for what
/// would reach the server as something else than was meant.
SFtpRequest requestOf(const Arguments& arguments);

#endif
