#ifndef SFTPCLIENT_CLI_OUTPUT_JSONRESULT_H
#define SFTPCLIENT_CLI_OUTPUT_JSONRESULT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// How an operation went, for programs.
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
    std::optional<std::vector<std::string>> names; // of ls
    std::optional<bool> sizeChecked;               // of put
    std::string signal;                            // that ended it
};

/// One JSON object on one line, in ASCII. Bytes that are no UTF-8 are replaced by U+FFFD.
std::string jsonOf(const Result& result);

#endif
