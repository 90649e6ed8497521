#include "base/ProxyEnvironment.h"
#include "base/UsageError.h"
#include "doctor/DoctorCommand.h"
#include "operation/Interruption.h"
#include "operation/RunOperation.h"
#include "output/Report.h"
#include "output/StandardStreams.h"
#include "tree/RunTree.h"
#include "usage/CommandLine.h"

#include <EscapeControlBytes.h>
#include <HostConfiguration.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

namespace {

constexpr int kCommandFailed = 255;

int run(const Arguments& arguments, const ProxyEnvironment& proxies)
{
    if (!arguments.configFile.empty()) {
        HostConfiguration::instance().load(arguments.configFile);
    }
    if (arguments.operation == Operation::Doctor) {
        return runDoctor(arguments, proxies);
    }
    if (isTree(arguments.operation)) {
        return runTree(arguments);
    }
    const Result result = runOperation(arguments, notify);
    const int signal = Interruption::signal();
    if (signal != SIGPIPE) {
        report(arguments, result);
    }
    if (signal != 0) {
        endBySignal(signal);
    }
    return result.code == kNotRun ? kCommandFailed : result.code;
}

int fail(int status, const std::exception& error)
{
    std::cerr << "sftpclient: " << escapeControlBytes(error.what()) << "\n";
    return status;
}

} // namespace

int main(int argc, char** argv)
try {
    openStandardDescriptors();
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN)); // a file that is full is a failure to be told
    const ProxyEnvironment proxies;
    int status = 0;
    const std::optional<Arguments> arguments = parseArguments(argc, argv, status);
    return arguments ? run(*arguments, proxies) : status;
} catch (const UsageError& error) {
    return fail(kWrongUsage, error);
} catch (const std::exception& error) {
    return fail(kCommandFailed, error);
}
