#ifndef SFTPCLIENT_CLI_DOCTOR_DOCTORCOMMAND_H
#define SFTPCLIENT_CLI_DOCTOR_DOCTORCOMMAND_H

#include "Arguments.h"

/// Runs "sftpclient doctor" and returns the exit status. Throws `UsageError` where the command cannot be run as it was
/// given.
int runDoctor(const Arguments& arguments);

#endif
