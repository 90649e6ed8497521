#include "output/Report.h"

#include "output/JsonResult.h"
#include "output/Listing.h"
#include "output/ResultLine.h"

#include <unistd.h>

#include <iostream>
#include <stdexcept>

namespace {

void printContents(const Arguments& arguments, const Result& result)
{
    const bool forTerminal = isatty(STDOUT_FILENO) == 1;
    if (result.entries) {
        printEntries(*result.entries, std::cout, forTerminal);
    } else if (result.entry) {
        printEntries({*result.entry}, std::cout, forTerminal);
    } else if (result.listing && arguments.local.empty()) {
        printListing(*result.listing, std::cout, forTerminal);
    }
}

void printJson(const Result& result)
{
    if (!(std::cout << jsonOf(result) << std::endl)) {
        throw std::runtime_error("the result cannot be written to standard output");
    }
}

} // namespace

void notify(const std::string& line) { std::cerr << line << std::endl; }

void report(const Arguments& arguments, const Result& result)
{
    if (!arguments.json) {
        printContents(arguments, result);
    }
    if (!result.hint.empty()) {
        std::cerr << "hint: " << result.hint << "\n";
    }
    notify(lineOf(result));
    if (arguments.json) {
        printJson(result);
    }
}
