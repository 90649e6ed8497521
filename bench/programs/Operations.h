#ifndef BENCH_PROGRAMS_OPERATIONS_H
#define BENCH_PROGRAMS_OPERATIONS_H

#include <SFtpRequest.h>

#include <map>
#include <string>

/// One call, answered as the library answers: 0, libcurl's code, or -1.
using Operation = int (*)(const SFtpRequest& request);

/// What a program can do, by name. The two programs that are compared share their main and differ in this alone.
const std::map<std::string, Operation>& operations();

#endif
