#include "RunOperation.h"

#include "OperationRun.h"
#include "Operations.h"
#include "RequestOf.h"
#include "credentials/Login.h"
#include "credentials/Password.h"
#include "output/Listing.h"
#include "transfer/Interruption.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>
#include <HostLog.h>

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace {

void configureHost(const Arguments& arguments)
{
    if (!arguments.configFile.empty()) {
        setenv("SFTPCLIENT_CONFIG", arguments.configFile.c_str(), 1);
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
    OperationWatch watch(trace ? &*trace : nullptr, progress ? &*progress : nullptr);
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
    std::cerr << result.operation << ": " << result.code << " " << escapeControlBytes(result.text) << std::endl;
    if (arguments.json) {
        printJson(result);
    }
}

// All that must be in order before a signal ends the process ends with this function.
int runInOrder(const Arguments& arguments)
{
    SFtpRequest request = requestOf(arguments);
    const WipedAtEnd wiped(request.password);
    readLogin(arguments, request);
    const Interruption interruption;
    std::optional<TemporaryFile> temporary;
    if (arguments.operation == Operation::List && arguments.local.empty()) {
        request.localPath = temporary.emplace().path();
    }
    const Result result = performWatched(arguments, request);
    std::ifstream listing;
    if (isListed(arguments, result)) {
        listing = openListing(request.localPath);
    }
    // Before anything is written: a reader that leaves early ends the process by SIGPIPE, which would leave the file.
    temporary.reset();
    report(arguments, result, listing);
    return exitStatusOf(result.code);
}

} // namespace

int runOperation(const Arguments& arguments)
{
    configureHost(arguments);
    const int status = runInOrder(arguments);
    const int signal = Interruption::signal();
    if (signal != 0) {
        endBySignal(signal);
    }
    return status;
}
