#include "operation/RunOperation.h"

#include "base/RequestOf.h"
#include "base/WipedAtEnd.h"
#include "credentials/Login.h"
#include "operation/HostRun.h"
#include "operation/Interruption.h"
#include "operation/SessionOptionsOf.h"
#include "operation/SessionRun.h"
#include "output/Listing.h"

#include <CurlProcess.h>
#include <HostLog.h>

#include <unistd.h>

#include <iostream>
#include <optional>

namespace {

Result emptyResult(const Arguments& arguments, const SFtpRequest& request)
{
    Result result;
    result.operation = arguments.name;
    result.url = request.remotePath;
    return result;
}

Result runAsHost(const Arguments& arguments, const SFtpRequest& request, Trace* trace, Progress* progress,
                 const Notice& notice)
{
    HostWatch watch(limitsOf(arguments), trace, progress);
    const ObservedTransfers observed(watch);
    HostRun run(arguments, request, watch, notice);
    return runToItsEnd(run, emptyResult(arguments, request), {arguments.retries, arguments.retryDelay}, notice);
}

Result runOnSessions(const Arguments& arguments, const SFtpRequest& request, Trace* trace, Progress* progress,
                     const Notice& notice)
{
    const SessionOptions options = sessionOptionsOf(arguments);
    SessionWatch watch(trace);
    const ObservedSessions observed(watch);
    SessionRun run(arguments, request, options, watch, progress, notice);
    return runToItsEnd(run, emptyResult(arguments, request), {arguments.retries, arguments.retryDelay}, notice);
}

Result runWatched(const Arguments& arguments, const SFtpRequest& request, const Notice& notice)
{
    const bool movesAFile = arguments.operation == Operation::Get || arguments.operation == Operation::Put;
    std::optional<Progress> progress;
    if (movesAFile && !arguments.quiet && isatty(STDERR_FILENO) == 1) {
        progress.emplace(std::cerr);
    }
    Progress* const shown = progress ? &*progress : nullptr;
    std::optional<Trace> trace;
    if (arguments.trace) {
        trace.emplace(std::cerr, request.userName, request.password, shown);
    }
    const CurlProcess curl;
    return (arguments.asHost ? runAsHost : runOnSessions)(arguments, request, trace ? &*trace : nullptr, shown, notice);
}

} // namespace

// All that must be in order before a signal ends the process ends with this function.
Result runOperation(const Arguments& arguments, const Notice& notice)
{
    if (arguments.quiet) {
        HostLog::instance().setFailuresOnly();
    }
    SFtpRequest request = requestOf(arguments);
    const WipedAtEnd wiped(request.password);
    readLogin(arguments, request);
    const Interruption interruption;
    // Gone before anything is written: a reader that leaves early ends the process by SIGPIPE.
    std::optional<TemporaryFile> temporary;
    if (arguments.operation == Operation::List && arguments.local.empty()) {
        request.localPath = temporary.emplace().path();
    }
    Result result = runWatched(arguments, request, notice);
    const bool isListed = arguments.operation == Operation::List && result.code == 0 && !result.entries;
    if (isListed && (arguments.json || temporary)) {
        result.listing = readListing(request.localPath);
    }
    return result;
}
