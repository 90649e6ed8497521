#include "doctor/RoundTrip.h"
#include "doctor/probes/Probes.h"

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
    Transfer removal{access.request.remotePath, Transfer::What::Nothing};
    for (const std::string& file : files) {
        removal.afterListing.push_back(access.scheme == Scheme::Sftp ? "rm \"" + access.path + file + "\""
                                                                     : "DELE " + file);
    }
    connection.mayReconnect();
    ProbeResult removed = connection.run(removal);
    ProbeResult looked = connection.run({access.request.remotePath, Transfer::What::Names});
    return looked.made ? looked : removed;
}

// A step that was begun may have left a file, unless it was deleted.
bool mayHaveLeftSomething(const RoundTrip& trip)
{
    const bool isBegun = trip.put.has_value() || trip.unfinished.has_value();
    return isBegun && trip.remove != 0;
}

} // namespace

void cleanUpOver(ControlConnection& connection, const Access& access, Report& report)
{
    RoundTrip& trip = *report.roundTrip;
    std::vector<std::string> files = {trip.name, renamed(trip.name)};
    if (report.sessionTrip) {
        files.push_back(report.sessionTrip->name);
        files.push_back(renamed(report.sessionTrip->name));
    }
    ProbeResult cleaned = removeAndLook(access, connection, files);
    if (isTurnedAway(cleaned, report)) {
        return;
    }
    // A session that was broken off leaves its file under a name of its own choice.
    std::vector<std::string> left = cleaned.names.holding(trip.name);
    if (!left.empty() && report.sessionTrip) {
        cleaned = removeAndLook(access, connection, left);
        left = cleaned.names.holding(trip.name);
    }
    trip.leftBehind.clear();
    for (const std::string& file : left) {
        trip.leftBehind.push_back(access.request.remotePath + file);
    }
    // At most one of the names of a trip is there: where one was removed, no listing is needed.
    const bool hasLooked = cleaned.succeeded() && !cleaned.names.isCut();
    const bool sessionMayHave = report.sessionTrip && mayHaveLeftSomething(*report.sessionTrip);
    trip.leftUnknown = !hasLooked && (sessionMayHave || (trip.remove != 0 && !hasRemovedOne(cleaned)));
}

void cleanUp(const Access& access, Report& report)
{
    const bool overTls = report.client.test.loggedIn() || access.scheme == Scheme::Sftp;
    const bool bySession = !overTls && report.session.test.loggedIn();
    ControlConnection connection(access, overTls ? Manner::Client : bySession ? Manner::Session : Manner::Bare);
    cleanUpOver(connection, access, report);
}

} // namespace doctor
