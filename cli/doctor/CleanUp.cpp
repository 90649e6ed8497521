#include "doctor/RoundTrip.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>

#include <algorithm>

namespace doctor {

namespace {

/// What came of removing files and then looking what is there.
struct Cleaned
{
    ProbeResult removed;
    ProbeResult looked;
};

// Of the files of the trip: a session's has another name.
bool hasRemovedOne(const ProbeResult& result, const RoundTrip& trip)
{
    return std::any_of(result.transcript.begin(), result.transcript.end(), [&trip](const Exchange& each) {
        const bool isOfTrip = each.command == "DELE " + trip.name || each.command == "DELE " + renamed(trip.name);
        return isOfTrip && each.reply.code / 100 == 2;
    });
}

// Where the login failed, it fails again; and a second wrong password can lock the user out.
bool mayLogInAgain(const Access& access, const ProbeResult& result)
{
    return access.scheme == Scheme::Sftp ? result.code != CURLE_LOGIN_DENIED : result.loggedIn();
}

// A server may close the connection after the last command.
Cleaned removeAndLook(const Access& access, ControlConnection& connection, const std::vector<std::string>& files)
{
    Transfer removal{access.request.remotePath, Transfer::What::Nothing};
    for (const std::string& file : files) {
        removal.afterListing.push_back(access.scheme == Scheme::Sftp ? "rm \"" + access.path + file + "\""
                                                                     : "DELE " + file);
    }
    const Transfer look{access.request.remotePath, Transfer::What::Names};
    connection.mayReconnect();
    Cleaned cleaned;
    cleaned.removed = connection.run(removal);
    cleaned.looked = connection.run(look);
    if (!cleaned.looked.made && mayLogInAgain(access, cleaned.removed)) {
        connection.mayReconnect();
        cleaned.looked = connection.run(look);
    }
    return cleaned;
}

// A step that was begun may have left a file, unless it was deleted.
bool mayHaveLeftSomething(const RoundTrip& trip)
{
    const bool isBegun = trip[Step::Put].code || trip.unfinished.has_value();
    return isBegun && !trip[Step::Remove].succeeded();
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
    Cleaned cleaned = removeAndLook(access, connection, files);
    if (isTurnedAway(cleaned.removed, report)) {
        return;
    }
    // A session that was broken off leaves its file under a name of its own choice.
    std::vector<std::string> left = cleaned.looked.names.holding(trip.name);
    if (!left.empty() && report.sessionTrip) {
        cleaned = removeAndLook(access, connection, left);
        left = cleaned.looked.names.holding(trip.name);
    }
    trip.leftBehind.clear();
    for (const std::string& file : left) {
        trip.leftBehind.push_back(access.request.remotePath + file);
    }
    // At most one of the names of a trip is there: where one was removed, no listing is needed.
    const bool hasLooked = cleaned.looked.succeeded() && !cleaned.looked.names.isCut();
    const bool sessionMayHave = report.sessionTrip && mayHaveLeftSomething(*report.sessionTrip);
    trip.leftUnknown =
        !hasLooked && (sessionMayHave || (!trip[Step::Remove].succeeded() && !hasRemovedOne(cleaned.removed, trip)));
}

void cleanUp(const Access& access, Report& report)
{
    const bool overTls = report.client.test.loggedIn() || access.scheme == Scheme::Sftp;
    const bool bySession = !overTls && report.session.test.loggedIn();
    ControlConnection connection(access, overTls ? Manner::Client : bySession ? Manner::Session : Manner::Bare);
    cleanUpOver(connection, access, report);
}

} // namespace doctor
