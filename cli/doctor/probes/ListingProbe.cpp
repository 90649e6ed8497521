#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

namespace doctor {

void probeListing(const Access& access, Report& report)
{
    // Where the login fails once, it fails again; and a second wrong password can lock the user out.
    const bool useful =
        report.test.made && (report.scheme == Scheme::Sftp ? report.test.code == 0 : report.test.loggedIn());
    if (!useful) {
        return;
    }
    Errand errand;
    errand.url = access.request.remotePath;
    errand.namesOnly = true;
    report.listing = visit(access, errand);
}

} // namespace doctor
