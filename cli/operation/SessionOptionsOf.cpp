#include "operation/SessionOptionsOf.h"

#include "base/Environment.h"
#include "base/InputFile.h"
#include "base/UsageError.h"

#include <boost/algorithm/string/replace.hpp>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace {

constexpr std::pair<const char*, const char*> kNames[] = {
    {"SessionOptions: proxy ", "--proxy "},
    {"SessionOptions: ", ""},
    {"remotePath", "URL"},
    {"localPath ", ""},
    {"caCert", "--ca"},
    {"hostKeySha256", "--fingerprint"},
    {"knownHostsFile", "--known-hosts"},
    {"pinnedPublicKey", "--pin"},
    {"clientCertificate", "--client-cert"},
    {"clientKey", "--client-key"},
    {"connectTimeout", "--connect-time"},
    {"stallTimeout", "--stall-time"},
    {"replyTimeout", "--stall-time"},
    {"callTimeout", "--max-time"},
};

void readClientCertificate(const Arguments& arguments, SessionOptions& options)
{
    if (arguments.clientCert.empty() != arguments.clientKey.empty()) {
        throw UsageError("--client-cert and --client-key belong together: give both, or neither.");
    }
    if (!arguments.clientCert.empty()) {
        const std::string remedy = "name a PEM file.";
        options.clientCertificate = contentsOf(arguments.clientCert, "The client's certificate", remedy);
        InputFile(arguments.clientKey).warnOfOtherReaders("the client's key");
        options.clientKey = contentsOf(arguments.clientKey, "The client's key", remedy);
    }
}

} // namespace

std::string knownHostsOf(const Arguments& arguments)
{
    if (!arguments.knownHosts.empty()) {
        if (access(arguments.knownHosts.c_str(), R_OK) != 0) {
            throw UsageError("The file of --known-hosts " + arguments.knownHosts +
                             " cannot be read: name one that can be.");
        }
        return arguments.knownHosts;
    }
    const std::string usual = environmentText("HOME") + "/.ssh/known_hosts";
    return access(usual.c_str(), R_OK) == 0 ? usual : std::string();
}

SessionOptions sessionOptionsOf(const Arguments& arguments)
{
    SessionOptions options;
    options.requireTls = !arguments.clearLogin;
    options.minimumTls = arguments.tlsMin;
    options.pinnedPublicKey = arguments.pin;
    readClientCertificate(arguments, options);
    options.knownHostsFile = knownHostsOf(arguments);
    options.hostKeySha256 = arguments.fingerprint;
    options.proxy = arguments.proxy;
    options.connectTimeout = arguments.connectTime;
    options.replyTimeout = arguments.stallTime;
    options.stallTimeout = arguments.stallTime;
    options.callTimeout = arguments.maxTime;
    options.sendRate = arguments.rate;
    options.receiveRate = arguments.rate;
    options.verifyUpload = arguments.verifies;
    // What a retry can go on from must be left for it.
    options.resume = arguments.resumes || arguments.retries > 0;
    return options;
}

SFtpSession sessionWith(const SessionOptions& options)
try {
    return SFtpSession(options);
} catch (const std::invalid_argument& error) {
    throw UsageError(withOptionNames(error.what()) + ".");
}

std::string withOptionNames(std::string text)
{
    for (const auto& name : kNames) {
        boost::replace_all(text, name.first, name.second);
    }
    return text;
}
