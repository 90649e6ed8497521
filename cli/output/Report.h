#ifndef SFTPCLIENT_CLI_OUTPUT_REPORT_H
#define SFTPCLIENT_CLI_OUTPUT_REPORT_H

#include "base/Arguments.h"
#include "base/Result.h"

#include <string>

/// Writes a line for the user to standard error, at once.
void notify(const std::string& line);

/// Tells the user how the operation went: what was asked for on standard output, the rest on standard error. Throws
/// `std::runtime_error` where standard output takes no more.
void report(const Arguments& arguments, const Result& result);

#endif
