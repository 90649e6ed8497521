#ifndef SFTPCLIENT_TESTS_CLI_RUNCOMMAND_H
#define SFTPCLIENT_TESTS_CLI_RUNCOMMAND_H

#include <string>
#include <utility>
#include <vector>

struct CommandResult
{
    int status; // the exit status, or the negative number of the signal that ended the command
    std::string out;
    std::string err;
};

using Variables = std::vector<std::pair<std::string, std::string>>;

/// Runs the command to its end, without a terminal, in `folder` (or else in this process's), with `input` on its
/// standard input.
CommandResult runCommand(const std::vector<std::string>& arguments, const Variables& environment = {},
                         const std::string& folder = {}, const std::string& input = {});

#endif
