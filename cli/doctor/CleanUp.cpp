#include "doctor/CleanUp.h"

#include "doctor/Access.h"
#include "doctor/ControlConnection.h"
#include "doctor/RoundTrip.h"

#include <algorithm>

namespace doctor {

namespace {

bool hasRemovedOne(const ProbeResult& result)
{
    return std::any_of(result.transcript.begin(), result.transcript.end(), [](const Exchange& each) {
        return each.command.compare(0, 5, "DELE ") == 0 && each.reply.code / 100 == 2;
    });
}

ProbeResult removeAndLook(const Access& access, ControlConnection& connection, const std::vector<std::string>& files)
{
    Transfer transfer{access.request.remotePath, Transfer::What::Names};
    for (const std::string& file : files) {
        transfer.afterLogin.push_back(access.scheme == Scheme::Sftp ? "rm \"" + access.path + file + "\""
                                                                    : "DELE " + access.path.substr(1) + file);
    }
    connection.mayReconnect();
    return connection.run(transfer);
}

// A step that was begun may have left a file, unless it was deleted.
bool mayHaveLeftSomething(const RoundTrip& trip)
{
    const bool isBegun = trip.put.has_value() || trip.unfinished.has_value();
    return isBegun && trip.remove != 0;
}

} // namespace

void cleanUp(const Question& question, const Report& report, RoundTrip& roundTrip)
{
    const Access access(question.request, question.limit);
    const bool overTls = report.client.test.loggedIn();
    const bool bySession = !overTls && report.session.test.loggedIn();
    ControlConnection connection(access, overTls ? Manner::Client : bySession ? Manner::Session : Manner::Bare);
    const std::string& name = roundTrip.name;
    std::vector<std::string> files = {name, renamed(name)};
    if (report.sessionTrip) {
        files.push_back(nameForSession(name));
        files.push_back(renamed(nameForSession(name)));
    }
    ProbeResult cleaned = removeAndLook(access, connection, files);
    // A session that was broken off leaves its file under a name of its own choice.
    std::vector<std::string> left = cleaned.names.holding(name);
    if (!left.empty() && report.sessionTrip) {
        cleaned = removeAndLook(access, connection, left);
        left = cleaned.names.holding(name);
    }
    for (const std::string& file : left) {
        roundTrip.leftBehind.push_back(question.request.remotePath + file);
    }
    // At most one of the names of a trip is there: where one was removed, no listing is needed.
    const bool hasLooked = cleaned.succeeded() && !cleaned.names.isCut();
    const bool sessionMayHave = report.sessionTrip && mayHaveLeftSomething(*report.sessionTrip);
    roundTrip.leftUnknown = !hasLooked && (sessionMayHave || (roundTrip.remove != 0 && !hasRemovedOne(cleaned)));
}

} // namespace doctor
