#include "usage/Options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace {

constexpr unsigned kHighestPort = 65535;
constexpr unsigned kMostRetries = 1000;
constexpr double kLongestDelay = 3600;
constexpr unsigned kLongestTimeout = 600;
constexpr unsigned kHour = 3600;
constexpr unsigned kDay = 24 * kHour;
constexpr unsigned kWeek = 7 * kDay;

unsigned toNumber(const std::string& text, unsigned lowest, unsigned highest)
{
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < lowest || number > highest) {
        throw std::invalid_argument("must be a number from " + std::to_string(lowest) + " to " +
                                    std::to_string(highest));
    }
    return number;
}

bool toSwitch(const std::string& text)
{
    for (const char* const on : {"true", "yes", "on", "1"}) {
        if (text == on) {
            return true;
        }
    }
    for (const char* const off : {"false", "no", "off", "0"}) {
        if (text == off) {
            return false;
        }
    }
    throw std::invalid_argument("must be true or false");
}

template <std::string Arguments::*member>
void storeText(Arguments& arguments, const std::string& text)
{
    if (text.empty()) {
        throw std::invalid_argument("must not be empty");
    }
    arguments.*member = text;
}

template <bool Arguments::*member>
void storeSwitch(Arguments& arguments, const std::string& text)
{
    arguments.*member = toSwitch(text);
}

void storePort(Arguments& arguments, const std::string& text) { arguments.port = toNumber(text, 1, kHighestPort); }

void storeNoVerify(Arguments& arguments, const std::string& text) { arguments.verifies = !toSwitch(text); }

void storeRetries(Arguments& arguments, const std::string& text)
{
    arguments.retries = toNumber(text, 0, kMostRetries);
}

void storeRetryDelay(Arguments& arguments, const std::string& text)
{
    double seconds = -1;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (read.ec != std::errc() || read.ptr != end || !(seconds >= 0 && seconds <= kLongestDelay)) {
        throw std::invalid_argument("must be a number of seconds from 0 to 3600");
    }
    arguments.retryDelay = std::chrono::milliseconds(std::llround(seconds * 1000));
}

template <std::chrono::seconds Arguments::*member, unsigned lowest, unsigned highest>
void storeSeconds(Arguments& arguments, const std::string& text)
{
    arguments.*member = std::chrono::seconds(toNumber(text, lowest, highest));
}

} // namespace

const std::vector<Option>& options()
{
    static const std::vector<Option> kOptions{
        {"--user", "NAME", "Name to log in with, if the URL has none", storeText<&Arguments::user>},
        {"--password-file", "FILE", "File whose first line is the password", storeText<&Arguments::passwordFile>},
        {"--password-stdin", "", "Read the password from standard input", storeSwitch<&Arguments::passwordFromInput>},
        {"--netrc", "", "Look for the login in ~/.netrc", storeSwitch<&Arguments::netrc>},
        {"--netrc-file", "FILE", "Look for the login in this file of the same form", storeText<&Arguments::netrcFile>},
        {"--ca", "FILE|none", "CA certificate of the server, or none (see below)", storeText<&Arguments::ca>},
        {"--port", "PORT", "1 to 65535, if it is not the URL's, or else 21,\nftps 990, sftp 22", storePort},
        {"--config", "FILE", "Configuration file, if not ~/.config/sftpclient/config",
         storeText<&Arguments::configFile>},
        {"--no-verify", "", "Do not compare the file's size on the server afterwards", storeNoVerify, Use::Put},
        {"--retry", "N",
         "Try again up to N times after a fault that may pass:\nresult 7, 28, 35, 52, 55 or 56, or a put whose "
         "size\nthere differs",
         storeRetries, Use::Operations},
        {"--retry-delay", "SECONDS", "Wait so long before trying again (1), and each time\ntwice as long",
         storeRetryDelay, Use::Operations},
        {"--connect-time", "SECONDS", "How long a connection and its login may take (20)",
         storeSeconds<&Arguments::connectTime, 1, kHour>, Use::Operations},
        {"--stall-time", "SECONDS", "Longest time without a byte (60)", storeSeconds<&Arguments::stallTime, 1, kDay>,
         Use::Operations},
        {"--max-time", "SECONDS", "How long everything may take, with all retries;\n0, as without it, for no limit",
         storeSeconds<&Arguments::maxTime, 0, kWeek>, Use::Operations},
        {"--json", "", "Write the result to standard output, as a JSON object", storeSwitch<&Arguments::json>},
        {"--trace", "", "Show what libcurl and the server say to each other,\nthe login masked",
         storeSwitch<&Arguments::trace>, Use::Operations},
        {"--quiet", "", "Log failures only, and show no progress", storeSwitch<&Arguments::quiet>, Use::Operations},
        {"--clear-login", "", "Let the password go in the clear, with an ftp: URL", storeSwitch<&Arguments::clearLogin>,
         Use::Doctor},
        {"--write", "", "Send, list, fetch, rename and delete a small file through\nthe library, and clean up",
         storeSwitch<&Arguments::writes>, Use::Doctor},
        {"--timeout", "SECONDS", "How long to wait for a connection, and for a reply (20)",
         storeSeconds<&Arguments::timeout, 1, kLongestTimeout>, Use::Doctor},
    };
    return kOptions;
}

bool belongsTo(const Option& option, Operation operation)
{
    switch (option.use) {
    case Use::Operations:
        return operation != Operation::Doctor;
    case Use::Put:
        return operation == Operation::Put;
    case Use::Doctor:
        return operation == Operation::Doctor;
    default:
        return true;
    }
}

std::string variableOf(const Option& option)
{
    std::string name = "SFTPCLIENT_" + keyOf(option);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char character) {
        return character == '-' ? '_' : static_cast<char>(std::toupper(character));
    });
    return name;
}

std::string keyOf(const Option& option) { return option.name + 2; }
