#ifndef BENCH_PROGRAMS_ARGUMENTS_H
#define BENCH_PROGRAMS_ARGUMENTS_H

#include <SFtpRequest.h>

#include <string>
#include <vector>

/// What every program under measurement is told: OPERATION URL LOCAL REMOTE [THREADS CALLS].
struct Arguments
{
    std::string operation;
    SFtpRequest request; ///< with the login and the CA that the environment names
    int threads = 1;
    int calls = 1;
};

/// Throws `std::runtime_error` with a text for whoever started the program.
Arguments readArguments(const std::vector<std::string>& words);

/// What to throw where a program has no operation of that name.
[[noreturn]] void refuseOperation(const std::string& name, const std::vector<std::string>& known);

#endif
