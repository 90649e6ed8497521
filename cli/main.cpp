#include "Operations.h"
#include "RequestOf.h"
#include "UsageError.h"
#include "credentials/Login.h"
#include "credentials/Password.h"
#include "output/Listing.h"
#include "output/StandardStreams.h"
#include "usage/CommandLine.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>
#include <HostLog.h>

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

namespace {

constexpr int kCommandFailed = 255;

void configureHost(const Arguments& arguments)
{
    if (!arguments.configFile.empty()) {
        setenv("SFTPCLIENT_CONFIG", arguments.configFile.c_str(), 1);
    }
    if (arguments.quiet) {
        HostLog::instance().setFailuresOnly();
    }
}

int run(const Arguments& arguments)
{
    configureHost(arguments);
    SFtpRequest request = requestOf(arguments);
    const WipedAtEnd wiped(request.password);
    readLogin(arguments, request);

    const bool printsListing = arguments.operation == Operation::List && arguments.local.empty();
    std::optional<TemporaryFile> listing;
    if (printsListing) {
        request.localPath = listing.emplace().path();
    }
    const RecordsApart recordsApart;
    const CurlProcess curl;
    const Outcome outcome = perform(arguments.operation, request);
    if (printsListing && outcome.code == 0) {
        printListing(request.localPath, std::cout, isatty(STDOUT_FILENO) == 1);
    }
    (printsListing ? std::cerr : std::cout)
        << arguments.name << ": " << outcome.code << " " << outcome.text << std::endl;
    return exitStatusOf(outcome.code);
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
    int status = 0;
    const std::optional<Arguments> arguments = parseArguments(argc, argv, status);
    return arguments ? run(*arguments) : status;
} catch (const UsageError& error) {
    return fail(kWrongUsage, error);
} catch (const std::exception& error) {
    return fail(kCommandFailed, error);
}
