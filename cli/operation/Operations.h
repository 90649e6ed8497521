#ifndef SFTPCLIENT_CLI_OPERATION_OPERATIONS_H
#define SFTPCLIENT_CLI_OPERATION_OPERATIONS_H

#include "base/Arguments.h"

#include <SFtpRequest.h>

#include <string>

/// The library's result where it could not run an operation at all.
constexpr int kNotRun = -1;

/// Runs the operation once and gives the library's result. `errorText` is replaced by libcurl's text, where there is
/// one. What libcurl prints to standard output meanwhile goes nowhere: header lines of the size check, and the contents
/// of what a connection test or a rename visits.
/// REQUIRES: one thread alone.
int perform(Operation operation, const SFtpRequest& request, std::string& errorText);

/// The exit status for a result.
int exitStatusOf(int code);

#endif
