#ifndef SFTPCLIENT_CLI_BASE_ARGUMENTS_H
#define SFTPCLIENT_CLI_BASE_ARGUMENTS_H

#include "base/RemoteUrl.h"

#include <SFtpSession.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

enum class Operation
{
    Test,
    List,
    Get,
    Put,
    Move,
    Remove,
    MakeDirectory,
    RemoveDirectory,
    Stat,
    Push,
    Pull,
    Doctor
};

inline bool isTree(Operation operation) { return operation == Operation::Push || operation == Operation::Pull; }

/// Whether `SFtpClient` has it, too.
inline bool isOfHost(Operation operation) { return operation < Operation::MakeDirectory; }

/// How whole trees are moved.
struct TreeArguments
{
    unsigned jobs = 4; // connections
    bool deletes = false;
    bool forces = false; // deletes all where the source is empty, too
    bool dryRun = false;
    bool checksum = false;
    bool keepsGoing = false;
    std::vector<std::string> excluded; // patterns
};

/// What the command is to do, from the command line, the environment and the configuration file together. What was not
/// given is empty, or 0.
struct Arguments
{
    Operation operation = Operation::Test;
    std::string name; // the operation's, as typed
    std::string url;  // as typed
    RemoteUrl remote; // the same, read
    std::string local;
    std::string remoteName; // OLD of mv, NAME of rm
    std::string newName;
    uint32_t port = 0;
    std::string user;
    std::string passwordFile;
    std::string netrcFile;
    std::string ca; // a file with one certificate or more, or "none"
    std::string pin;
    std::string clientCert;
    std::string clientKey;
    TlsVersion tlsMin = TlsVersion::Tls12;
    std::string knownHosts; // empty: the user's own file, if there is one
    std::string fingerprint;
    std::string proxy;
    std::string configFile;
    bool passwordFromInput = false;
    bool netrc = false;
    bool clearLogin = false; // the login of an ftp: URL may go in the clear
    bool asHost = false;     // through SFtpClient, as a host runs it; else on a session
    bool quiet = false;
    bool trace = false;
    bool json = false;
    bool verifies = true;   // put compares the sizes
    bool isLong = false;    // ls tells kind, size and time
    bool resumes = false;   // get and put leave what has moved, and go on from there
    std::uint64_t rate = 0; // of get and put, in bytes a second; 0: no limit
    unsigned retries = 0;
    std::chrono::milliseconds retryDelay{1000}; // before the first
    std::chrono::seconds connectTime{20};       // of each connection
    std::chrono::seconds stallTime{60};         // without a byte
    std::chrono::seconds maxTime{0};            // of the whole operation; 0: no limit
    TreeArguments tree;                         // of push and pull
    bool writes = false;                        // doctor tries a round trip
    std::chrono::seconds timeout{20};           // of doctor's own connections
};

/// Exit status where the command could not be run as it was given.
constexpr int kWrongUsage = 2;

#endif
