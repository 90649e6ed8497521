#include "doctor/Predictions.h"

#include "doctor/Diagnosis.h"

#include <curl/curl.h>

#include <algorithm>

namespace doctor {

int codeOf(const Report& report, const ProbeResult& result)
{
    if (result.made) {
        return result.code;
    }
    if (report.contact.code != CURLE_OK) {
        return report.contact.code;
    }
    return isSilent(report) ? CURLE_OPERATION_TIMEDOUT : report.client.test.code;
}

int asReported(int code) { return code == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : code; }

bool hasLookedForFile(const Reply& reply)
{
    return reply.code == 550 || reply.code == 551 || reply.code == 553 || reply.code / 10 == 45;
}

const Reply* sizeReply(const Report& report)
{
    const Reply* const bare = report.bareCommands.replyTo("SIZE ");
    return bare != nullptr ? bare : report.client.commands.replyTo("SIZE ");
}

bool canLoseUploads(const Report& report)
{
    constexpr unsigned int kWaitsForTheServersClose = 0x080e01; // the oldest that is tested and waits
    return report.scheme == Scheme::Ftps && report.tls.versions[0].offered &&
           report.libcurl.number < kWaitsForTheServersClose;
}

namespace {

constexpr int kRefusedByTheLibrary = -1;

Expectation works(std::string reason = {}, std::string remedy = {})
{
    return {Outlook::Works, 0, std::move(reason), std::move(remedy)};
}

Expectation fails(std::optional<int> code, Diagnosis why)
{
    return {Outlook::Fails, code, std::move(why.reason), std::move(why.remedy)};
}

Expectation unknown(std::string reason, std::string remedy)
{
    return {Outlook::Unknown, std::nullopt, std::move(reason), std::move(remedy)};
}

const ProbeResult& listingVisit(const Report& report)
{
    return report.client.listing.made ? report.client.listing : report.client.test;
}

Expectation failsLike(const Report& report, const ProbeResult& visit, bool bare)
{
    return fails(asReported(codeOf(report, visit)), diagnoseVisit(report, visit, bare));
}

Expectation predictTest(const Report& report)
{
    if (report.client.test.succeeded()) {
        return works();
    }
    // Alone of all, it answers with libcurl's code unchanged.
    return fails(codeOf(report, report.client.test), diagnoseVisit(report, report.client.test, false));
}

Expectation predictList(const Report& report)
{
    const ProbeResult& visit = listingVisit(report);
    return visit.succeeded() ? works() : failsLike(report, visit, false);
}

// Login and data connection of an upload, for ftp: URLs when only the user's name may be sent in the clear.
Expectation predictByUserAlone(const Report& report)
{
    const Reply& reply = report.clearUser;
    if (reply.ending == Ending::NotTried) {
        return failsLike(report, report.client.test, false);
    }
    if (reply.ending != Ending::Complete || reply.code >= 400) {
        const bool closed = reply.ending == Ending::Closed;
        const bool timedOut = reply.code == 421 || reply.ending == Ending::Silent;
        const int code = timedOut ? CURLE_OPERATION_TIMEDOUT : CURLE_LOGIN_DENIED;
        return fails(closed ? CURLE_RECV_ERROR : code, diagnoseClearLogin(reply));
    }
    return unknown("it logs in without TLS, and the server lets that begin " + quote(reply),
                   "Run doctor with --clear-login to try that login, which sends the password in the clear; an ftps: "
                   "URL would need none.");
}

Expectation predictUploadOverSsh(const Report& report)
{
    if (report.client.test.made && report.client.test.code == CURLE_REMOTE_FILE_NOT_FOUND) {
        return works("it makes the missing directory");
    }
    return report.client.test.succeeded() || isUnlisted(report.client) ? works()
                                                                       : failsLike(report, report.client.test, false);
}

Expectation cautionAboutLostEnds()
{
    return works("but this libcurl can lose the end of an upload over TLS 1.3 and report success",
                 "Use libcurl 8.14.1 or newer, or limit the server to TLS 1.2, or compare the sizes after each "
                 "upload.");
}

Expectation successfulUpload(const Report& report, const std::string& reason)
{
    return canLoseUploads(report) ? cautionAboutLostEnds() : works(reason);
}

Expectation predictUpload(const Report& report)
{
    if (report.scheme == Scheme::Sftp) {
        return predictUploadOverSsh(report);
    }
    if (!report.bare.made) {
        return predictByUserAlone(report);
    }
    const bool missing = report.bare.code == CURLE_REMOTE_ACCESS_DENIED;
    const ProbeResult& visit = report.bareAgain.made ? report.bareAgain : report.bare;
    if (visit.succeeded()) {
        return successfulUpload(report, missing ? "it makes the missing directory" : "");
    }
    if (visit.code != CURLE_FTP_COULDNT_RETR_FILE && refusalOf(visit) == nullptr) {
        return failsLike(report, visit, true);
    }
    if (report.scheme == Scheme::Ftp && report.client.listing.succeeded()) {
        const Reply* const reply = report.bare.replyTo("NLST");
        return fails(CURLE_UPLOAD_FAILED,
                     {"it sends its data without TLS, which the server refuses " + quote(reply ? *reply : Reply{}),
                      "Use implicit TLS, with an ftps: URL, or SFTP; or allow data connections without TLS at the "
                      "server."});
    }
    return unknown("the server refuses every listing, so its data connection could not be tried",
                   "Run doctor with --write to try an upload.");
}

// The size check logs in as the upload does, but needs no data connection.
Expectation predictSizeCheck(const Report& report)
{
    if (report.scheme == Scheme::Sftp) {
        const bool passes = report.client.test.succeeded() ||
                            (report.client.test.made && report.client.test.code == CURLE_REMOTE_FILE_NOT_FOUND) ||
                            isUnlisted(report.client);
        return passes ? works() : failsLike(report, report.client.test, false);
    }
    if (!report.bare.made) {
        return predictByUserAlone(report);
    }
    if (!report.bare.loggedIn() || report.bare.code == CURLE_REMOTE_ACCESS_DENIED) {
        return failsLike(report, report.bare, true);
    }
    if (report.bare.code == CURLE_FTP_COULDNT_SET_TYPE) {
        return failsLike(report, report.bare, true);
    }
    const Reply* const size = sizeReply(report);
    if (size == nullptr || size->ending != Ending::Complete) {
        const bool isClosed = size != nullptr && size->ending == Ending::Closed;
        return unknown(isClosed ? "the server closes the connection at the command SIZE"
                                : "the server was not asked for a size",
                       "Run doctor with --write to try a download.");
    }
    if (size->code != 213 && size->code != 550) {
        return fails(std::nullopt, {"the server does not report sizes " + quote(*size), "Turn on SIZE at the server."});
    }
    return works();
}

Expectation predictDownload(const Report& report)
{
    Expectation check = predictSizeCheck(report);
    if (check.outlook == Outlook::Fails) {
        check.code = kRefusedByTheLibrary;
        check.reason = "the size check before it: " + check.reason;
        return check;
    }
    // A file needs what a listing needs, but for the server's leave to list.
    const bool transfers =
        report.client.test.succeeded() || report.client.listing.succeeded() || isUnlisted(report.client);
    if (!transfers &&
        (listingVisit(report).code == CURLE_FTP_COULDNT_RETR_FILE || refusalOf(listingVisit(report)) != nullptr)) {
        return unknown("the server refuses every listing, so its data connection could not be tried",
                       "Run doctor with --write to try a download.");
    }
    if (!transfers) {
        return failsLike(report, report.client.test, false);
    }
    if (check.outlook == Outlook::Unknown) {
        check.reason = "the size check before it: " + check.reason;
    }
    return check;
}

bool namesAnotherDirectory(const Report& report)
{
    const std::string& entry = report.client.test.entryPath.raw();
    return report.scheme != Scheme::Sftp && !entry.empty() && entry != "/" &&
           report.commandDirectory.compare(0, 2, "//") != 0;
}

Diagnosis unknownVerb(const std::string& verb, const Reply& reply)
{
    return {"the server does not know the command \"" + verb + "\" " + quote(reply),
            "Use SFTP, with an sftp: URL, where libcurl carries the command out itself: the common FTP servers know "
            "neither \"rename\" nor \"rm\"."};
}

// The command was for a file that is not there.
Expectation predictCommand(const Report& report, const std::string& verb)
{
    if (report.commandDirectory.empty()) {
        return unknown(
            "the URL's path holds \":\", \"%\", \"?\" or \"#\", where the library may take another directory",
            "Use a directory above it, and name the rest together with the file.");
    }
    if (!report.client.test.succeeded()) {
        return failsLike(report, report.client.test, false);
    }
    if (report.scheme == Scheme::Sftp) {
        return works();
    }
    const Reply* const reply = report.client.commands.replyTo(verb + " ");
    if (reply == nullptr || reply->ending != Ending::Complete) {
        const bool isClosed = reply != nullptr && reply->ending == Ending::Closed;
        return unknown("the server " + std::string(isClosed ? "closes the connection at" : "did not answer") +
                           " the command \"" + verb + "\"",
                       "Run doctor with --write to try it on a file of its own.");
    }
    if (reply->code < 400) {
        return unknown("the server accepts the command \"" + verb + "\" for a file that is not there " + quote(*reply),
                       "Run doctor with --write to try it on a file of its own.");
    }
    if (!hasLookedForFile(*reply)) {
        return fails(CURLE_QUOTE_ERROR, unknownVerb(verb, *reply));
    }
    if (namesAnotherDirectory(report)) {
        return fails(CURLE_QUOTE_ERROR,
                     {"the login leads to " + report.client.test.entryPath.shown() + ", but the command \"" + verb +
                          "\" counts the URL's path from the server's root",
                      "Confine the user to that directory at the server, or write the whole path behind two slashes: "
                      "//home/user/."});
    }
    return works();
}

Expectation withheld(const Report& report)
{
    Diagnosis why = diagnoseHostKey(report);
    return unknown("doctor does not send the password: " + why.reason, std::move(why.remedy));
}

// A server that does not let a conversation end keeps an operation for ever, too, or until it fails.
Expectation unfinished(const std::string& what, const std::string& failure)
{
    return unknown(what + " " + failure,
                   failure == kInterrupted ? kRunAgain : "Look at the server's log, and run doctor again.");
}

} // namespace

std::vector<Prediction> predict(const Report& report)
{
    std::vector<Prediction> predictions = {{predictDownload(report), "download", {}},
                                           {predictUpload(report), "upload", {}},
                                           {predictCommand(report, "rename"), "rename", {}},
                                           {predictCommand(report, "rm"), "delete", {}},
                                           {predictList(report), "list", {}},
                                           {predictTest(report), "test", {}}};
    for (Prediction& each : predictions) {
        Expectation& client = each;
        each.session = predictForSession(report, each.operation);
        if (isLoginWithheld(report)) {
            client = withheld(report);
        } else if (!report.unfinishedLogin.empty()) {
            client = each.session = unfinished("the probe that logs in", report.unfinishedLogin);
        } else if (!report.unfinishedBare.empty() && !report.bare.made &&
                   (each.operation == "upload" || each.operation == "download")) {
            client = unfinished("the login without the library's TLS step", report.unfinishedBare);
        }
    }
    applyTrips(report, predictions);
    for (Prediction& each : predictions) {
        if (each.outlook == Outlook::Fails && each.session.outlook == Outlook::Works) {
            each.remedy = "Use SFtpSession, with which it works." +
                          (each.remedy.empty() ? "" : " With SFtpClient: " + each.remedy);
        }
    }
    return predictions;
}

int exitStatusOf(const std::vector<Prediction>& predictions)
{
    constexpr int kOneFails = 1;
    constexpr int kOneIsUnknown = 3;
    const auto has = [&predictions](Outlook outlook) {
        return std::any_of(predictions.begin(), predictions.end(),
                           [outlook](const Prediction& each) { return each.outlook == outlook; });
    };
    if (has(Outlook::Fails)) {
        return kOneFails;
    }
    return has(Outlook::Unknown) ? kOneIsUnknown : 0;
}

} // namespace doctor
