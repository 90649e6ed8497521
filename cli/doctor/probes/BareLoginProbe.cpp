#include "doctor/ControlConnection.h"
#include "doctor/Silence.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>

namespace doctor {

namespace {

std::string withoutPath(const std::string& url) { return url.substr(0, url.find('/', url.find("://") + 3)) + "/"; }

bool mayBeMade(const Report& report)
{
    // A second wrong password can lock the user out.
    const bool wrongPassword = report.test.code == CURLE_LOGIN_DENIED && report.test.replyTo("PASS") != nullptr;
    if (report.contact.code != CURLE_OK || wrongPassword) {
        return false;
    }
    if (report.scheme == Scheme::Ftp) {
        return report.clearLogin && report.contact.greeting.isPositive();
    }
    return report.scheme == Scheme::Ftps && !isSilent(report);
}

} // namespace

void probeBareLogin(const Access& access, const std::string& missing, Report& report)
{
    if (!mayBeMade(report)) {
        return;
    }
    Errand errand;
    errand.url = access.request.remotePath;
    errand.tlsStep = false;
    errand.namesOnly = true;
    errand.afterLogin = {"TYPE I", "SIZE " + missing};
    report.bare = visit(access, errand);
    // Whether data gets through can still be seen: an upload makes a directory that is missing, and needs no leave to
    // list names.
    if (report.bare.code == CURLE_REMOTE_ACCESS_DENIED) {
        errand.url = withoutPath(access.request.remotePath);
        report.bareAgain = visit(access, errand);
    } else if (report.bare.code == CURLE_FTP_COULDNT_RETR_FILE) {
        errand.namesOnly = false;
        report.bareAgain = visit(access, errand);
    }
}

} // namespace doctor
