#include "doctor/Diagnosis.h"

#include <request/HostKey.h>

namespace doctor {

namespace {

using session::HostKeyVerdict;

HostKeyVerdict verdictOn(const Report& report)
{
    return session::judgeHostKey(report.hostKey.match, report.hostKey.fingerprint, report.hostKeySha256);
}

// Of a sentence that the key's line ends. At the top: libcurl takes the first line that may be the server's, and every
// hashed one may, for the type of key to ask for; and it ignores what is behind a line that it cannot read.
std::string topOf(const std::string& file) { return "put this line at the top of " + file; }

std::string inShellQuotes(const std::string& text)
{
    std::string quoted = "'";
    for (const char each : text) {
        quoted += each == '\'' ? "'\\''" : std::string(1, each);
    }
    return quoted + "'";
}

// Two lines for one server would leave the old key trusted.
std::string replacing(const Report& report)
{
    const std::string& line = report.hostKey.line;
    const std::string host = line.substr(0, line.find(' '));
    const std::string& file = report.knownHostsFile;
    return "remove the old key (ssh-keygen -R " + inShellQuotes(host) + " -f " + inShellQuotes(file) + ") and " +
           topOf(file) + ": " + line;
}

std::string confirmed(const Report& report)
{
    return "the server's administrator confirms " + report.hostKey.fingerprint;
}

Diagnosis diagnoseUnknown(const Report& report)
{
    const std::string& line = report.hostKey.line;
    const std::string& file = report.knownHostsFile;
    if (file.empty()) {
        return {"a session is told nothing of the server's host key",
                "If " + confirmed(report) + ", give that with --fingerprint (SessionOptions::hostKeySha256), or " +
                    topOf("~/.ssh/known_hosts, or of a file for --known-hosts (SessionOptions::knownHostsFile)") +
                    ": " + line};
    }
    return {"the server's host key is not in " + file,
            "If " + confirmed(report) + ", give that with --fingerprint (SessionOptions::hostKeySha256), or " +
                topOf(file) + ": " + line};
}

std::string describeMatch(const Report& report)
{
    const std::string& file = report.knownHostsFile;
    if (report.hostKey.notCompared != CURLE_OK) {
        return "because of " + file + " a session asks for one of another type, in vain";
    }
    switch (report.hostKey.match) {
    case CURLKHMATCH_OK:
        return "as in " + file;
    case CURLKHMATCH_MISMATCH:
        return file + " has another one for the server";
    default:
        return "not in " + file;
    }
}

} // namespace

bool isHostKeyTrusted(const Report& report)
{
    return report.hostKey.notCompared == CURLE_OK && verdictOn(report) == HostKeyVerdict::Known;
}

bool isHostKeyUnknown(const Report& report)
{
    return report.hostKey.notCompared == CURLE_OK && verdictOn(report) == HostKeyVerdict::Unknown;
}

bool isLoginWithheld(const Report& report)
{
    if (report.hostKey.fingerprint.empty()) {
        return false;
    }
    const HostKeyVerdict verdict = verdictOn(report);
    return verdict == HostKeyVerdict::Changed || verdict == HostKeyVerdict::Unexpected;
}

std::string describeHostKey(const Report& report)
{
    std::string text = report.hostKey.type + " " + report.hostKey.fingerprint;
    if (!report.knownHostsFile.empty()) {
        text += "; " + describeMatch(report);
    }
    const std::string& expected = report.hostKeySha256;
    if (!expected.empty()) {
        text += report.hostKey.fingerprint == session::withFingerprintName(expected) ? "; as expected"
                                                                                     : "; expected is " + expected;
    }
    if (report.knownHostsFile.empty() && expected.empty()) {
        text += "; a session has nothing to compare it with";
    }
    return text + "; SFtpClient does not compare it";
}

Diagnosis diagnoseHostKey(const Report& report)
{
    const HostKey& key = report.hostKey;
    const std::string& file = report.knownHostsFile;
    if (key.notCompared != CURLE_OK) {
        return {"because of " + file + " a session asks for a host key of another type than the server has (" +
                    key.error.shown() + ")",
                "If " + confirmed(report) + ", " + replacing(report)};
    }
    switch (verdictOn(report)) {
    case HostKeyVerdict::Changed:
        return {file + " has another host key for the server",
                "Somebody may be intercepting the connection: send nothing more until " + confirmed(report) +
                    "; then " + replacing(report)};
    case HostKeyVerdict::Unexpected:
        return {"the server's host key is " + key.fingerprint + ", not the expected " + report.hostKeySha256,
                "Somebody may be intercepting the connection: send nothing more until " + confirmed(report) +
                    "; then give that with --fingerprint (SessionOptions::hostKeySha256)."};
    default:
        return diagnoseUnknown(report);
    }
}

} // namespace doctor
