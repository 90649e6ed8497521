#ifndef SFTPCLIENT_TESTS_CLI_RUNCOMMAND_H
#define SFTPCLIENT_TESTS_CLI_RUNCOMMAND_H

#include <string>
#include <utility>
#include <vector>

struct CommandResult
{
    int status; // the exit status, or -1 when a signal ended the command
    std::string out;
    std::string err;
};

/// Runs the command, without a terminal and with `environment` (names and values) for its variables SFTPCLIENT_...
CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::pair<std::string, std::string>>& environment = {});

#endif
