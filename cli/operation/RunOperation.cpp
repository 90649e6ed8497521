#include "operation/RunOperation.h"

#include "base/RequestOf.h"
#include "base/WipedAtEnd.h"
#include "credentials/Login.h"
#include "operation/Interruption.h"
#include "operation/OperationRun.h"
#include "operation/Operations.h"
#include "output/Listing.h"
#include "output/ResultLine.h"

#include <CurlProcess.h>
#include <HostConfiguration.h>
#include <HostLog.h>

#include <unistd.h>

#include <iostream>
#include <optional>
#include <stdexcept>

namespace {

void configureHost(const Arguments& arguments)
{
    if (!arguments.configFile.empty()) {
        HostConfiguration::instance().load(arguments.configFile);
    }
    if (arguments.quiet) {
        HostLog::instance().setFailuresOnly();
    }
}

Result performWatched(const Arguments& arguments, const SFtpRequest& request)
{
    std::optional<Trace> trace;
    if (arguments.trace) {
        trace.emplace(std::cerr, request.userName, request.password);
    }
    const bool movesAFile = arguments.operation == Operation::Get || arguments.operation == Operation::Put;
    std::optional<Progress> progress;
    if (movesAFile && !arguments.quiet && isatty(STDERR_FILENO) == 1) {
        progress.emplace(std::cerr);
    }
    const CurlProcess curl;
    const TimeLimits limits{arguments.connectTime, arguments.stallTime, arguments.maxTime};
    OperationWatch watch(limits, trace ? &*trace : nullptr, progress ? &*progress : nullptr);
    const ObservedTransfers observed(watch);
    return OperationRun(arguments, request, watch).run();
}

void printJson(const Result& result)
{
    if (!(std::cout << jsonOf(result) << std::endl)) {
        throw std::runtime_error("the result cannot be written to standard output");
    }
}

bool isListed(const Arguments& arguments, const Result& result)
{
    return arguments.operation == Operation::List && result.code == 0;
}

void report(const Arguments& arguments, Result result, std::istream& listing)
{
    const bool listed = isListed(arguments, result);
    if (listed && arguments.json) {
        result.names = namesIn(listing);
    } else if (listed && arguments.local.empty()) {
        printListing(listing, std::cout, isatty(STDOUT_FILENO) == 1);
    }
    if (!result.hint.empty()) {
        std::cerr << "hint: " << result.hint << "\n";
    }
    std::cerr << lineOf(result) << std::endl;
    if (arguments.json) {
        printJson(result);
    }
}

/// An operation that is over, and the names that it listed.
struct Outcome
{
    Result result;
    std::ifstream listing;
};

// All that must be in order before a signal ends the process ends with this function.
Outcome runInOrder(const Arguments& arguments)
{
    SFtpRequest request = requestOf(arguments);
    const WipedAtEnd wiped(request.password);
    readLogin(arguments, request);
    const Interruption interruption;
    // Gone before anything is written: a reader that leaves early ends the process by SIGPIPE.
    std::optional<TemporaryFile> temporary;
    if (arguments.operation == Operation::List && arguments.local.empty()) {
        request.localPath = temporary.emplace().path();
    }
    Outcome outcome{performWatched(arguments, request), {}};
    if (isListed(arguments, outcome.result)) {
        outcome.listing = openListing(request.localPath);
    }
    return outcome;
}

} // namespace

int runOperation(const Arguments& arguments)
{
    configureHost(arguments);
    Outcome outcome = runInOrder(arguments);
    const int signal = Interruption::signal();
    if (signal == SIGPIPE) {
        endBySignal(signal);
    }
    report(arguments, outcome.result, outcome.listing);
    if (signal != 0) {
        endBySignal(signal);
    }
    return exitStatusOf(outcome.result.code);
}
