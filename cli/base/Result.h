#ifndef SFTPCLIENT_CLI_BASE_RESULT_H
#define SFTPCLIENT_CLI_BASE_RESULT_H

#include <SFtpSession.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The result where SFtpClient could not run an operation at all.
constexpr int kNotRun = -1;

/// How an operation went.
struct Result
{
    std::string operation;
    std::string url; // without a login
    int code = 0;
    std::string text;
    std::string reply; // the server's last one, where it failed
    std::string hint;
    std::int64_t bytes = 0;
    double seconds = 0;
    unsigned attempts = 1;
    std::optional<std::string> listing;              // the names of ls, one a line, as they came
    std::optional<std::vector<RemoteEntry>> entries; // of ls -l
    std::optional<RemoteEntry> entry;                // of stat
    std::optional<bool> sizeChecked;                 // of put
    std::string signal;                              // that ended it
};

#endif
