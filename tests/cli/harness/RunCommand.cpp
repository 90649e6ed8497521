#include "harness/RunCommand.h"

#include "support/TemporaryFolder.h"

ProcessSetup commandSetup(const Words& arguments, const Variables& environment, const std::string& folder)
{
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND};
    setup.words.insert(setup.words.end(), arguments.begin(), arguments.end());
    setup.environment = environment;
    setup.folder = folder;
    return setup;
}

ProgramResult runCommand(const Words& arguments, const Variables& environment, const std::string& folder,
                         const std::string& input)
{
    const TextFile in(input);
    ProcessSetup setup = commandSetup(arguments, environment, folder);
    setup.in = in.path();
    return runProgram(setup);
}
