#ifndef SFTPCLIENT_CLI_DOCTOR_DOCTORCOMMAND_H
#define SFTPCLIENT_CLI_DOCTOR_DOCTORCOMMAND_H

#include "base/Arguments.h"
#include "base/ProxyEnvironment.h"

/// Runs "sftpclient doctor" and returns the exit status. It goes through no proxy, and says what a host started with
/// that environment would do. Throws `UsageError` where the command cannot be run as it was
/// given.
int runDoctor(const Arguments& arguments, const ProxyEnvironment& proxies);

#endif
