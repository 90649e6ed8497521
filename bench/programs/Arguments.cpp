#include "Arguments.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

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

} // namespace

Arguments readArguments(const std::vector<std::string>& words)
{
    if (words.size() != 4 && words.size() != 6) {
        throw std::runtime_error("usage: PROGRAM OPERATION URL LOCAL REMOTE [THREADS CALLS]\n"
                                 "BENCH_PASSWORD is the password of the user backup, BENCH_CA the CA's file.");
    }
    Arguments arguments;
    arguments.operation = words[0];
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

void refuseOperation(const std::string& name, const std::vector<std::string>& known)
{
    std::string text = "There is no operation " + name + ", but:";
    for (const std::string& each : known) {
        text += " " + each;
    }
    throw std::runtime_error(text);
}
