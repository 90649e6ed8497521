#ifndef SFTPCLIENT_TESTS_EXAMPLES_RUNPROGRAM_H
#define SFTPCLIENT_TESTS_EXAMPLES_RUNPROGRAM_H

#include <string>
#include <utility>
#include <vector>

struct ProgramResult
{
    int status; ///< the exit status, or minus the signal that ended it
    std::string out;
    std::string err;
};

/// Runs a program, named by its path, to its end, with these variables set besides those of this process.
ProgramResult runProgram(const std::vector<std::string>& command,
                         const std::vector<std::pair<std::string, std::string>>& environment);

#endif
