#include "doctor/ControlConnection.h"
#include "doctor/Silence.h"
#include "doctor/probes/Probes.h"

namespace doctor {

// The verbs get what the library would send, but for names that no file has: a server that knows them looks for the
// file and finds none. Without a name, a server might take its own idea of what is meant.
void probeTest(const Access& access, const std::string& missing, Report& report)
{
    if (report.contact.code != 0 || isSilent(report)) {
        return;
    }
    Errand errand;
    errand.url = access.request.remotePath;
    if (access.scheme != Scheme::Sftp) {
        errand.afterLogin = {"TYPE I", "SIZE " + missing};
        const std::string path = report.commandDirectory + missing;
        if (!report.commandDirectory.empty()) {
            errand.afterListing = {"rename " + path + " " + path + ".renamed", "rm " + path};
        }
    }
    report.test = visit(access, errand);
}

} // namespace doctor
