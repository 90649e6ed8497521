#include "doctor/CleanUp.h"

#include "doctor/Access.h"
#include "doctor/ControlConnection.h"
#include "doctor/RoundTrip.h"

#include <algorithm>

namespace doctor {

namespace {

bool removedOne(const ProbeResult& visit)
{
    return std::any_of(visit.transcript.begin(), visit.transcript.end(), [](const Exchange& each) {
        return each.command.compare(0, 5, "DELE ") == 0 && each.reply.code / 100 == 2;
    });
}

} // namespace

void cleanUp(const Question& question, const Report& report, RoundTrip& roundTrip)
{
    const Access access(question.request, question.limit);
    ControlConnection connection(access, report.client.test.loggedIn() ? Manner::Client : Manner::Bare);
    Transfer transfer{question.request.remotePath, Transfer::What::Names};
    const std::vector<std::string> files = {roundTrip.name, renamed(roundTrip.name)};
    for (const std::string& file : files) {
        transfer.afterLogin.push_back(access.scheme == Scheme::Sftp ? "rm \"" + access.path + file + "\""
                                                                    : "DELE " + access.path.substr(1) + file);
    }
    const ProbeResult cleaned = connection.run(transfer);
    for (const std::string& file : files) {
        if (cleaned.names.holds(file)) {
            roundTrip.leftBehind.push_back(question.request.remotePath + file);
        }
    }
    // At most one of the two names is there: where one was removed, no listing is needed.
    const bool looked = cleaned.succeeded() && !cleaned.names.isCut();
    roundTrip.leftUnknown = !looked && roundTrip.remove != 0 && !removedOne(cleaned);
}

} // namespace doctor
