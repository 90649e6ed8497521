#include "doctor/Predictions.h"

#include "doctor/Diagnosis.h"

#include <curl/curl.h>

namespace doctor {

namespace {

constexpr char kTryWriting[] = "Run doctor with --write to try it.";

Expectation works(std::string reason = {}) { return {Outlook::Works, 0, std::move(reason), {}}; }

Expectation fails(int code, Diagnosis why)
{
    return {Outlook::Fails, asReported(code), std::move(why.reason), std::move(why.remedy)};
}

Expectation unknown(std::string reason) { return {Outlook::Unknown, std::nullopt, std::move(reason), kTryWriting}; }

const Login& loginOf(const Report& report) { return report.session.test.made ? report.session : report.client; }

std::optional<Expectation> hostKeyObstacle(const Report& report)
{
    const HostKey& key = report.hostKey;
    if (key.fingerprint.empty() || isHostKeyTrusted(report)) {
        return std::nullopt;
    }
    return fails(key.notCompared != CURLE_OK ? key.notCompared : CURLE_PEER_FAILED_VERIFICATION,
                 diagnoseHostKey(report));
}

std::optional<Expectation> certificateObstacle(const Report& report)
{
    if (report.trust == Trust::Nobody || report.tls.chain.empty() || !offersUsableTls(report)) {
        return std::nullopt;
    }
    if (report.tls.givenTrust > 0) {
        return fails(CURLE_PEER_FAILED_VERIFICATION, diagnoseGivenTrust(report));
    }
    if (!report.tls.namesHost) {
        return fails(CURLE_PEER_FAILED_VERIFICATION,
                     {"the certificate does not name " + report.host + ", and a session compares the name",
                      "Use a name that the certificate has in the URL, or give the server one that names this host; or "
                      "set SessionOptions::compareHostName to false."});
    }
    return std::nullopt;
}

// The login led into the directory, or would have, were it there.
bool isInside(const Report& report, const ProbeResult& test)
{
    if (report.scheme == Scheme::Sftp) {
        return test.succeeded() || test.code == CURLE_REMOTE_FILE_NOT_FOUND || test.code == CURLE_REMOTE_ACCESS_DENIED;
    }
    const bool begun =
        test.replyTo("EPSV") != nullptr || test.replyTo("PASV") != nullptr || test.code == CURLE_FTP_COULDNT_SET_TYPE;
    return test.succeeded() || test.code == CURLE_REMOTE_ACCESS_DENIED || (test.loggedIn() && begun);
}

// What keeps every operation from getting as far as the directory.
std::optional<Expectation> obstacle(const Report& report)
{
    const ProbeResult& test = loginOf(report).test;
    if (report.libcurl.speaksScheme && (report.trust == Trust::Unreadable || report.trust == Trust::NobodyRefused)) {
        return fails(CURLE_SSL_CACERT_BADFILE, diagnoseCaFile(report, false));
    }
    if (report.tls.caFails && report.trust == Trust::Certificate) {
        return fails(CURLE_SSL_CACERT_BADFILE, {"libcurl cannot use one of the given CA certificates",
                                                "Give certificates that are whole, as PEM, or one as DER."});
    }
    std::optional<Expectation> stranger =
        report.scheme == Scheme::Sftp ? hostKeyObstacle(report) : certificateObstacle(report);
    if (stranger) {
        return stranger;
    }
    if (report.scheme == Scheme::Sftp && report.session.test.made) {
        return fails(test.code, {"the server refuses the password (" + test.error.shown() +
                                     "); SFtpClient logs in with a key of this machine, and a session with the "
                                     "password alone",
                                 "Check the password, and whether the server lets that user log in with one."});
    }
    if (!isInside(report, test)) {
        return fails(codeOf(report, test), diagnoseVisit(report, test, false));
    }
    return std::nullopt;
}

bool isMissing(const Report& report)
{
    const int code = loginOf(report).test.code;
    if (isUnlisted(loginOf(report))) {
        return false;
    }
    return code == CURLE_REMOTE_ACCESS_DENIED || (report.scheme == Scheme::Sftp && code == CURLE_REMOTE_FILE_NOT_FOUND);
}

Expectation missing(const Report& report)
{
    const ProbeResult& test = loginOf(report).test;
    return fails(CURLE_REMOTE_FILE_NOT_FOUND, diagnoseVisit(report, test, false));
}

Expectation predictList(const Report& report)
{
    const Login& login = loginOf(report);
    const ProbeResult& listing = login.listing.made ? login.listing : login.test;
    if (listing.succeeded()) {
        return works();
    }
    return isMissing(report) ? missing(report) : fails(listing.code, diagnoseVisit(report, listing, false));
}

// A file needs what a listing needs, but for the server's leave to list.
Expectation predictData(const Report& report)
{
    const Login& login = loginOf(report);
    if (login.test.succeeded() || login.listing.succeeded() || login.root.succeeded() || isUnlisted(login)) {
        const Reply* const size = login.commands.replyTo("SIZE ");
        const bool isClosed = size != nullptr && size->ending == Ending::Closed;
        return isClosed ? unknown("the server closes the connection at the command SIZE") : works();
    }
    const ProbeResult& last = login.root.made ? login.root : login.listing.made ? login.listing : login.test;
    return last.code == CURLE_FTP_COULDNT_RETR_FILE || refusalOf(last) != nullptr
               ? unknown("the server refuses every listing, so the data connection could not be tried")
               : fails(last.code, diagnoseVisit(report, last, false));
}

Expectation predictCommand(const Report& report, const std::string& command)
{
    if (report.scheme == Scheme::Sftp) {
        return isMissing(report) ? fails(CURLE_QUOTE_ERROR, diagnoseVisit(report, loginOf(report).test, false))
                                 : works();
    }
    const Reply* const reply = loginOf(report).commands.replyTo(command + " ");
    if (reply == nullptr || reply->ending != Ending::Complete) {
        return unknown("the server closes the connection at the command " + command);
    }
    return reply->code < 400 || hasLookedForFile(*reply)
               ? works()
               : fails(CURLE_QUOTE_ERROR,
                       {"the server refuses the command " + command + " " + quote(*reply), "Allow it at the server."});
}

Expectation predictUpload(const Report& report)
{
    if (report.scheme == Scheme::Sftp) {
        const bool isClosed = isMissing(report) && loginOf(report).test.code == CURLE_REMOTE_ACCESS_DENIED;
        return isClosed ? missing(report) : works(isMissing(report) ? "it makes the missing directory" : "");
    }
    Expectation data = predictData(report);
    if (data.outlook != Outlook::Works) {
        return data;
    }
    Expectation renaming = predictCommand(report, "RNFR");
    if (renaming.outlook != Outlook::Works) {
        renaming.remedy = "Allow renaming at the server, or set SessionOptions::atomicUpload to false.";
        return renaming;
    }
    return works(isMissing(report) ? "it makes the missing directory" : "");
}

} // namespace

Expectation predictForSession(const Report& report, const std::string& operation)
{
    if (const std::optional<Expectation> stopped = obstacle(report)) {
        return *stopped;
    }
    if (operation == "upload") {
        return predictUpload(report);
    }
    if (operation == "list") {
        return predictList(report);
    }
    const bool isSshTest = report.scheme == Scheme::Sftp && operation == "test";
    if (isMissing(report) && !isSshTest && (report.scheme != Scheme::Sftp || operation == "download")) {
        return missing(report);
    }
    if (operation == "test") {
        return works();
    }
    return operation == "download" ? predictData(report)
                                   : predictCommand(report, operation == "rename" ? "RNFR" : "DELE");
}

} // namespace doctor
