#ifndef SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H
#define SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H

#include "doctor/ControlConnection.h"
#include "doctor/Report.h"

#include <functional>
#include <string>

/// The steps of a round trip: a small file is sent, listed, fetched, renamed and deleted. Where one fails, those that
/// need it are left out. Each function calls `save` before a step, for the report to be kept whatever becomes of it.
namespace doctor {

using Save = std::function<void()>;

/// Sends the file as the library's upload does over FTP, and asks for its size, as the library does before a download.
/// REQUIRES: `connection` is a bare one.
void sendFile(const Access& access, ControlConnection& connection, RoundTrip& trip, const Save& save);

/// The other steps, as the library makes them, over one connection; with SSH all of them. Cleans up after both trips.
void makeTrip(const Access& access, Report& report, const Save& save);

/// All steps with a session.
void makeSessionTrip(const Access& access, Report& report, const Save& save);

/// Removes what the trips may have left behind, with the protocol's own commands, and looks whether it is gone. The way
/// in is one that the report has seen to work.
void cleanUp(const Access& access, Report& report);
void cleanUpOver(ControlConnection& connection, const Access& access, Report& report);

/// The library's operation that a step tries, as in a prediction.
const char* operationOf(Step step);

/// The name that the file gets on its way.
std::string renamed(const std::string& name);

/// The files of this trip and of a session's, by what all their names have in common.
std::string whatMayBeLeft(const RoundTrip& trip);

} // namespace doctor

#endif
