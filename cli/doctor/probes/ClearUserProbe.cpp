#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>

namespace doctor {

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

} // namespace doctor
