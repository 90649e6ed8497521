#include "doctor/Conversation.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>

namespace doctor {

void probeClearUser(const Access& access, Report& report)
{
    if (access.scheme != Scheme::Ftp || report.clearLogin || !report.contact.greeting.isPositive()) {
        return;
    }
    Conversation conversation(access);
    if (conversation.code() != CURLE_OK || !conversation.hear().isPositive()) {
        return;
    }
    report.clearUser = conversation.ask("USER " + access.request.userName);
    if (report.clearUser.ending == Ending::Complete && report.clearUser.code != 421) {
        conversation.ask("QUIT");
    }
}

} // namespace doctor
