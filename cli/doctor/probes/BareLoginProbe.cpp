#include "doctor/ControlConnection.h"
#include "doctor/Diagnosis.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>

namespace doctor {

namespace {

bool mayBeMade(const Report& report)
{
    // A second wrong password can lock the user out.
    const auto isWrongPassword = [](const ProbeResult& test) {
        return test.code == CURLE_LOGIN_DENIED && test.replyTo("PASS") != nullptr;
    };
    const bool wrongPassword = isWrongPassword(report.client.test) || isWrongPassword(report.session.test);
    if (report.contact.code != CURLE_OK || wrongPassword) {
        return false;
    }
    if (report.scheme == Scheme::Ftp) {
        return report.clearLogin && report.contact.greeting.isPositive();
    }
    return report.scheme == Scheme::Ftps && !isSilent(report);
}

} // namespace

void probeClearUser(const Access& access, Report& report)
{
    if (access.scheme != Scheme::Ftp || report.clearLogin || !report.contact.greeting.isPositive()) {
        return;
    }
    ControlConnection connection(access, Manner::Bare);
    Transfer transfer{access.request.remotePath, Transfer::What::Nothing};
    transfer.lastCommand = "USER";
    const ProbeResult result = connection.run(transfer);
    if (isTurnedAway(result, report)) {
        report.clearUser = result.transcript.front().reply;
        return;
    }
    if (const Reply* const reply = result.replyTo("USER")) {
        report.clearUser = *reply;
    }
}

void probeBareLogin(const Access& access, const std::string& missing, Report& report, const Save& save)
{
    if (!mayBeMade(report)) {
        return;
    }
    ControlConnection connection(access, Manner::Bare);
    report.bare = connection.run({access.request.remotePath, Transfer::What::Names});
    if (isTurnedAway(report.bare, report)) {
        return;
    }
    // Whether data gets through can still be seen: an upload makes a directory that is missing, and needs no leave to
    // list names.
    if (report.bare.code == CURLE_REMOTE_ACCESS_DENIED) {
        report.bareAgain = connection.run({access.rootUrl(), Transfer::What::Names});
    } else if (report.bare.code == CURLE_FTP_COULDNT_RETR_FILE) {
        report.bareAgain = connection.run({access.request.remotePath, Transfer::What::LongListing});
    }
    if (report.bare.loggedIn()) {
        const bool isMissing = report.bare.code == CURLE_REMOTE_ACCESS_DENIED;
        report.bareCommands = askAbout({"TYPE I", "SIZE " + missing},
                                       isMissing ? access.rootUrl() : access.request.remotePath, connection);
    }
    if (report.roundTrip && report.bare.loggedIn() && !isDirectoryMissing(report)) {
        sendFile(access, connection, *report.roundTrip, save);
    }
}

} // namespace doctor
