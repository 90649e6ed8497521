#ifndef SFTPCLIENT_CLI_OPERATION_HOSTOPERATIONS_H
#define SFTPCLIENT_CLI_OPERATION_HOSTOPERATIONS_H

#include "base/Arguments.h"
#include "base/Result.h"

#include <SFtpRequest.h>

#include <string>

/// Runs the operation once and gives the library's result. `errorText` is replaced by libcurl's text, where there is
/// one. What libcurl prints to standard output meanwhile goes nowhere: header lines of the size check, and the contents
/// of what a connection test or a rename visits.
/// REQUIRES: one thread alone.
int performAsHost(Operation operation, const SFtpRequest& request, std::string& errorText);

#endif
