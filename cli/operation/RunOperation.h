#ifndef SFTPCLIENT_CLI_OPERATION_RUNOPERATION_H
#define SFTPCLIENT_CLI_OPERATION_RUNOPERATION_H

#include "base/Arguments.h"
#include "operation/OperationRun.h"

/// Runs the operation that `arguments` name to its end, as a host with SFtpClient does or on a session. A signal that
/// came meanwhile is `Interruption::signal()`: the caller ends the process by it when all is reported.
/// Throws `UsageError`, and others for failures of the command itself.
Result runOperation(const Arguments& arguments, const Notice& notice);

#endif
