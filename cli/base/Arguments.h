#ifndef SFTPCLIENT_CLI_BASE_ARGUMENTS_H
#define SFTPCLIENT_CLI_BASE_ARGUMENTS_H

#include <chrono>
#include <cstdint>
#include <string>

enum class Operation
{
    Test,
    List,
    Get,
    Put,
    Move,
    Remove,
    Doctor
};

/// What the command is to do, from the command line, the environment and the configuration file together. What was not
/// given is empty, or 0.
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
    std::string passwordFile;
    bool passwordFromInput = false;
    bool netrc = false;
    std::string netrcFile;
    std::string ca;
    std::string configFile;
    bool quiet = false;
    bool trace = false;
    bool json = false;
    bool verifies = true; // put compares the sizes
    unsigned retries = 0;
    std::chrono::milliseconds retryDelay{1000}; // before the first
    std::chrono::seconds connectTime{20};       // of each connection
    std::chrono::seconds stallTime{60};         // without a byte
    std::chrono::seconds maxTime{0};            // of the whole operation; 0: no limit
    bool clearLogin = false;                    // doctor may send the password in the clear
    bool writes = false;                        // doctor tries a round trip
    std::chrono::seconds timeout{20};           // of doctor's own connections
};

/// Exit status where the command could not be run as it was given.
constexpr int kWrongUsage = 2;

#endif
