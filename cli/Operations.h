#ifndef SFTPCLIENT_CLI_OPERATIONS_H
#define SFTPCLIENT_CLI_OPERATIONS_H

#include "Arguments.h"

#include <SFtpRequest.h>

#include <string>

/// The library's answer: its result, and what to tell the user about it.
struct Outcome
{
    int code;
    std::string text;
};

/// Runs the operation. What libcurl itself prints meanwhile goes nowhere: the contents of what a connection test or a
/// rename visits, and the trace of the size check before a download, which holds the password.
/// REQUIRES: one thread alone, and records that do not go to descriptor 2, or a download's are lost.
Outcome perform(Operation operation, const SFtpRequest& request);

/// The exit status for a result.
int exitStatusOf(int code);

#endif
