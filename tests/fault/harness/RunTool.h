#ifndef FAULT_HARNESS_RUNTOOL_H
#define FAULT_HARNESS_RUNTOOL_H

#include <string>
#include <vector>

/// Runs the `curl` command of this machine to its end and gives its exit code, which is libcurl's result code.
/// Throws `std::runtime_error` where there is no such command, or a signal ended it.
int runTool(const std::vector<std::string>& arguments);

#endif
