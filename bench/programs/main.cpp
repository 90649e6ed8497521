// One operation, so many times on so many threads: the process as a whole is what is measured.

#include "Arguments.h"
#include "Operations.h"

#include <curl/curl.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

Operation operationNamed(const std::string& name)
{
    const auto found = operations().find(name);
    if (found != operations().end()) {
        return found->second;
    }
    std::vector<std::string> known;
    for (const auto& each : operations()) {
        known.push_back(each.first);
    }
    refuseOperation(name, known);
}

// The first code that is no success, or 0.
int callAll(Operation operation, const Arguments& arguments)
{
    std::atomic<int> result{0};
    const auto call = [&] {
        for (int i = 0; i < arguments.calls; ++i) {
            const int code = operation(arguments.request);
            int success = 0;
            if (code != 0) {
                result.compare_exchange_strong(success, code);
            }
        }
    };
    if (arguments.threads == 1) {
        call();
        return result;
    }
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(arguments.threads));
    for (int i = 0; i < arguments.threads; ++i) {
        threads.emplace_back(call);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return result;
}

} // namespace

int main(int argc, char** argv)
try {
    const Arguments arguments = readArguments({argv + 1, argv + argc});
    const Operation operation = operationNamed(arguments.operation);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const int result = callAll(operation, arguments);
    curl_global_cleanup();
    return result;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return EXIT_FAILURE;
}
