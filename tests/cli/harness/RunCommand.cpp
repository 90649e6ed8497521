#include "harness/RunCommand.h"

#include "harness/Process.h"
#include "harness/TextFile.h"

CommandResult runCommand(const std::vector<std::string>& arguments, const Variables& environment,
                         const std::string& folder, const std::string& input)
{
    const TextFile in(input);
    const TemporaryFile out;
    const TemporaryFile err;
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND};
    setup.words.insert(setup.words.end(), arguments.begin(), arguments.end());
    setup.environment = environment;
    setup.folder = folder;
    setup.in = in.path();
    setup.out = out.path();
    setup.err = err.path();
    const int status = Process(setup).wait();
    return {status, contentsOf(out.path()), contentsOf(err.path())};
}
