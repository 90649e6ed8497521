#ifndef CLI_HARNESS_RUNCOMMAND_H
#define CLI_HARNESS_RUNCOMMAND_H

#include "support/Lines.h"
#include "support/Process.h"

#include <string>

/// The command with these arguments, without a terminal, in `folder` (by default in this process's).
ProcessSetup commandSetup(const Words& arguments, const Variables& environment = {}, const std::string& folder = {});

/// Runs it to its end with `input` on its standard input.
ProgramResult runCommand(const Words& arguments, const Variables& environment = {}, const std::string& folder = {},
                         const std::string& input = {});

#endif
