#include "usage/Options.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>

namespace {

constexpr unsigned kHighestPort = 65535;
constexpr unsigned kMostRetries = 1000;
constexpr unsigned kMostJobs = 64;
constexpr double kLongestDelay = 3600;
constexpr unsigned kLongestTimeout = 600;
constexpr unsigned kHour = 3600;
constexpr unsigned kDay = 24 * kHour;
constexpr unsigned kWeek = 7 * kDay;
constexpr std::uint64_t kHighestRate = std::numeric_limits<std::int64_t>::max();

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

// The environment and the configuration file are for all operations.
void storeAsHost(Arguments& arguments, const std::string& text)
{
    arguments.asHost = toSwitch(text) && isOfHost(arguments.operation);
}

void storePort(Arguments& arguments, const std::string& text) { arguments.port = toNumber(text, 1, kHighestPort); }

// With "K", "M" or "G" behind it for each 1024.
void storeRate(Arguments& arguments, const std::string& text)
{
    constexpr std::string_view kUnits = "KMG";
    std::uint64_t rate = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, rate);
    const std::size_t unit = read.ptr == end ? kUnits.npos : kUnits.find(*read.ptr);
    const unsigned bits = unit == kUnits.npos ? 0 : 10 * (static_cast<unsigned>(unit) + 1);
    const bool isWhole = read.ptr + (unit == kUnits.npos ? 0 : 1) == end;
    if (read.ec != std::errc() || !isWhole || rate == 0 || rate > kHighestRate >> bits) {
        throw std::invalid_argument("must be a number of bytes a second, such as 500K or 2M");
    }
    arguments.rate = rate << bits;
}

void storeTlsMin(Arguments& arguments, const std::string& text)
{
    if (text != "1.2" && text != "1.3") {
        throw std::invalid_argument("must be 1.2 or 1.3");
    }
    arguments.tlsMin = text == "1.3" ? TlsVersion::Tls13 : TlsVersion::Tls12;
}

void storePin(Arguments& arguments, const std::string& text)
{
    if (!boost::starts_with(text, "sha256//")) {
        throw std::invalid_argument("must be sha256// and the base64 of a public key's SHA-256");
    }
    arguments.pin = text;
}

// What is no proxy to libcurl, it repeats in its message, with a password where there is one.
void storeProxy(Arguments& arguments, const std::string& text)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
    const bool isUrl = curl_url_set(url.get(), CURLUPART_URL, text.c_str(),
                                    CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME) == CURLUE_OK;
    const std::string scheme = text.substr(0, std::min(text.find("://"), text.size()));
    const auto known = {"http", "https", "socks4", "socks4a", "socks5", "socks5h"};
    const bool isKnown = scheme == text || std::any_of(known.begin(), known.end(), [&scheme](const char* each) {
                             return boost::iequals(each, scheme);
                         });
    if (!isUrl || !isKnown) {
        throw std::invalid_argument("must be the URL of an http, https, socks4, socks4a, socks5 or socks5h proxy");
    }
    arguments.proxy = text;
}

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

// What would match nothing, or in one directory only, would not keep from --delete what it is to keep.
void requirePattern(const std::string& pattern)
{
    if (pattern.empty()) {
        throw std::invalid_argument("must not be empty");
    }
    const std::size_t begin = pattern.front() == '/' ? 1 : 0;
    const std::size_t end = pattern.size() - (pattern.size() > 1 && pattern.back() == '/' ? 1 : 0);
    const std::string path = pattern.substr(begin, end - begin);
    const auto names = {"//", "/./", "/../"};
    if (path.find("**/") != path.npos || std::any_of(names.begin(), names.end(), [&path](const char* name) {
            return ("/" + path + "/").find(name) != path.npos;
        })) {
        throw std::invalid_argument(
            "must not hold \"**/\", nor an empty name, \".\" or \"..\" beside a \"/\": without a "
            "\"/\", it matches names in every directory");
    }
}

// A line each: a pattern can hold any other byte.
void storeExclusions(Arguments& arguments, const std::string& text)
{
    arguments.tree.excluded.clear();
    for (std::string::size_type begin = 0; begin <= text.size();) {
        const std::string::size_type end = std::min(text.find('\n', begin), text.size());
        requirePattern(text.substr(begin, end - begin));
        arguments.tree.excluded.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

template <bool TreeArguments::*member>
void storeTreeSwitch(Arguments& arguments, const std::string& text)
{
    arguments.tree.*member = toSwitch(text);
}

void storeJobs(Arguments& arguments, const std::string& text) { arguments.tree.jobs = toNumber(text, 1, kMostJobs); }

} // namespace

const std::vector<Option>& options()
{
    constexpr bool kOfSession = true;
    constexpr bool kRepeats = true;
    static const std::vector<Option> kOptions{
        {"--user", "NAME", "Name to log in with, if the URL has none", storeText<&Arguments::user>},
        {"--password-file", "FILE", "File whose first line is the password", storeText<&Arguments::passwordFile>},
        {"--password-stdin", "", "Read the password from standard input", storeSwitch<&Arguments::passwordFromInput>},
        {"--netrc", "", "Look for the login in ~/.netrc", storeSwitch<&Arguments::netrc>},
        {"--netrc-file", "FILE", "Look for the login in this file of the same form", storeText<&Arguments::netrcFile>},
        {"--ca", "FILE|none", "CA certificates of the server, or none (see below)", storeText<&Arguments::ca>},
        {"--pin", "sha256//HASH", "The server's public key, as curl's --pinnedpubkey", storePin, Use::Operations,
         kOfSession},
        {"--client-cert", "FILE", "Certificate to show to the server, PEM, with --client-key",
         storeText<&Arguments::clientCert>, Use::Operations, kOfSession},
        {"--client-key", "FILE", "Its key, PEM, without a passphrase", storeText<&Arguments::clientKey>,
         Use::Operations, kOfSession},
        {"--tls-min", "VERSION", "Oldest version of TLS: 1.2, as without it, or 1.3", storeTlsMin, Use::Operations,
         kOfSession},
        {"--clear-login", "", "Let an ftp: login go in the clear, if the server has no\nTLS",
         storeSwitch<&Arguments::clearLogin>, Use::Everywhere, kOfSession},
        {"--known-hosts", "FILE", "Keys of SSH servers, if not ~/.ssh/known_hosts", storeText<&Arguments::knownHosts>,
         Use::Everywhere, kOfSession},
        {"--fingerprint", "SHA256:HASH", "The SSH server's key, as ssh-keygen -l prints it",
         storeText<&Arguments::fingerprint>, Use::Everywhere, kOfSession},
        {"--proxy", "URL", "Proxy to go through, such as socks5h://proxy:1080", storeProxy, Use::Operations,
         kOfSession},
        {"--port", "PORT", "1 to 65535, if it is not the URL's, or else 21,\nftps 990, sftp 22", storePort},
        {"--config", "FILE", "Configuration file, if not ~/.config/sftpclient/config",
         storeText<&Arguments::configFile>},
        {"--as-host", "", "Run it as a host with SFtpClient does (see below)", storeAsHost, Use::OfHost},
        {"--long", "", "Show kind, size and time (UTC) of each entry", storeSwitch<&Arguments::isLong>, Use::List,
         kOfSession, "-l"},
        {"--resume", "", "Go on with what a broken transfer has left, and leave it", storeSwitch<&Arguments::resumes>,
         Use::Transfers, kOfSession},
        {"--limit-rate", "BYTES", "At most so many bytes a second; 500K, 2M, 1G", storeRate, Use::Transfers,
         kOfSession},
        {"--jobs", "N", "Connections at a time (4)", storeJobs, Use::Trees},
        {"--delete", "", "Delete what the source does not have", storeTreeSwitch<&TreeArguments::deletes>, Use::Trees},
        {"--force", "", "With --delete: even if the source holds no file", storeTreeSwitch<&TreeArguments::forces>,
         Use::Trees},
        {"--exclude", "PATTERN", "Leave out what has such a name, or path; may be repeated", storeExclusions,
         Use::Trees, !kOfSession, "", kRepeats},
        {"--checksum", "", "Compare contents of files of the same size by the\nserver's checksums, not times",
         storeTreeSwitch<&TreeArguments::checksum>, Use::Trees},
        {"--keep-going", "", "Go on with the other files after a failure", storeTreeSwitch<&TreeArguments::keepsGoing>,
         Use::Trees},
        {"--dry-run", "", "Only tell what would be done", storeTreeSwitch<&TreeArguments::dryRun>, Use::Trees},
        {"--no-verify", "", "Do not compare the file's size on the server afterwards", storeNoVerify, Use::Put},
        {"--retry", "N",
         "Try again up to N times after a fault that may pass;\ntransfers go on from where they broke off",
         storeRetries, Use::Operations},
        {"--retry-delay", "SECONDS",
         "Wait so long before trying again (1), each time twice\nas long, and up to half of it less", storeRetryDelay,
         Use::Operations},
        {"--connect-time", "SECONDS", "How long a connection and its login may take (20)",
         storeSeconds<&Arguments::connectTime, 1, kHour>, Use::Operations},
        {"--stall-time", "SECONDS", "Longest time without a byte (60)", storeSeconds<&Arguments::stallTime, 1, kDay>,
         Use::Operations},
        {"--max-time", "SECONDS", "How long everything may take, with all retries;\n0, as without it, for no limit",
         storeSeconds<&Arguments::maxTime, 0, kWeek>, Use::Operations},
        {"--json", "", "Write the result to standard output, as a JSON object", storeSwitch<&Arguments::json>},
        {"--trace", "", "Show what libcurl and the server say to each other,\nthe login masked",
         storeSwitch<&Arguments::trace>, Use::Single},
        {"--quiet", "", "Log failures only, and show no progress", storeSwitch<&Arguments::quiet>, Use::Operations},
        {"--write", "", "Send, list, fetch, rename and delete a small file as both\nlibraries do, and clean up",
         storeSwitch<&Arguments::writes>, Use::Doctor},
        {"--timeout", "SECONDS", "How long a login may take, and each later reply (20)",
         storeSeconds<&Arguments::timeout, 1, kLongestTimeout>, Use::Doctor},
    };
    return kOptions;
}

bool belongsTo(const Option& option, Operation operation)
{
    switch (option.use) {
    case Use::Operations:
        return operation != Operation::Doctor;
    case Use::OfHost:
        return isOfHost(operation);
    case Use::List:
        return operation == Operation::List;
    case Use::Transfers:
        return operation == Operation::Get || operation == Operation::Put || isTree(operation);
    case Use::Trees:
        return isTree(operation);
    case Use::Single:
        return operation != Operation::Doctor && !isTree(operation);
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
    return "SFTPCLIENT_" + boost::to_upper_copy(boost::replace_all_copy(keyOf(option), "-", "_"));
}

std::string keyOf(const Option& option) { return option.name + 2; }
