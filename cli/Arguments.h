#ifndef SFTPCLIENT_CLI_ARGUMENTS_H
#define SFTPCLIENT_CLI_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>

enum class Operation
{
    Test,
    List,
    Get,
    Put,
    Move,
    Remove
};

/// What the command line said. What was not given is empty, or 0.
struct Arguments
{
    Operation operation = Operation::Test;
    std::string name; // the operation's, as typed
    std::string url;
    std::string local;
    std::string remoteName; // OLD of mv, NAME of rm
    std::string newName;
    uint32_t port = 0;
    std::string user;
    std::string ca;
    std::string passwordFile;
    std::string configFile;
    bool quiet = false;
};

/// Exit status where the command could not be run as it was given.
constexpr int kWrongUsage = 2;

/// Reads the command line. Where there is nothing to run, because help was asked for or the usage is wrong, it prints
/// what is to be said, sets `status` to the exit status and returns nothing.
std::optional<Arguments> parseArguments(int argc, const char* const* argv, int& status);

#endif
