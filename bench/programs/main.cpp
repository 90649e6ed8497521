// One operation, so many times on so many threads: the process as a whole is what is measured.

#include "operation/Operations.h"

#include <curl/curl.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Arguments
{
    Operation operation = nullptr;
    SFtpRequest request;
    int threads = 1;
    int calls = 1;
};

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string fromEnvironment(const char* name)
{
    const char* const value = std::getenv(name);
    if (value == nullptr) {
        throw std::runtime_error(std::string(name) + " is not set in the environment");
    }
    return value;
}

Operation operationNamed(const std::string& name)
{
    const auto found = operations().find(name);
    if (found == operations().end()) {
        std::string known;
        for (const auto& each : operations()) {
            known += " " + each.first;
        }
        throw std::runtime_error("There is no operation " + name + ", but:" + known);
    }
    return found->second;
}

Arguments readArguments(const std::vector<std::string>& words)
{
    if (words.size() != 4 && words.size() != 6) {
        throw std::runtime_error("usage: PROGRAM OPERATION URL LOCAL REMOTE [THREADS CALLS]\n"
                                 "BENCH_PASSWORD is the password of the user backup, BENCH_CA the CA's file.");
    }
    Arguments arguments;
    arguments.operation = operationNamed(words[0]);
    arguments.request.remotePath = words[1];
    arguments.request.localPath = words[2];
    arguments.request.remoteFileName = words[3];
    arguments.request.userName = "backup";
    arguments.request.password = fromEnvironment("BENCH_PASSWORD");
    arguments.request.caCert = contentOf(fromEnvironment("BENCH_CA"));
    if (words.size() == 6) {
        arguments.threads = std::stoi(words[4]);
        arguments.calls = std::stoi(words[5]);
    }
    return arguments;
}

// The first code that is no success, or 0.
int callAll(const Arguments& arguments)
{
    std::atomic<int> result{0};
    const auto call = [&] {
        for (int i = 0; i < arguments.calls; ++i) {
            const int code = arguments.operation(arguments.request);
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
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const int result = callAll(arguments);
    curl_global_cleanup();
    return result;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return EXIT_FAILURE;
}
