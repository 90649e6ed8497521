#ifndef SFTPCLIENT_CLI_OPERATION_RUNOPERATION_H
#define SFTPCLIENT_CLI_OPERATION_RUNOPERATION_H

#include "base/Arguments.h"

/// Runs the library's operation that `arguments` name and tells the user how it went. Gives the exit status; does not
/// return where a signal interrupted it, but ends the process by that signal when all is in order.
/// Throws `UsageError`, and others for failures of the command itself.
int runOperation(const Arguments& arguments);

#endif
