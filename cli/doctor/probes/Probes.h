#ifndef SFTPCLIENT_CLI_DOCTOR_PROBES_PROBES_H
#define SFTPCLIENT_CLI_DOCTOR_PROBES_PROBES_H

#include "doctor/Access.h"
#include "doctor/ControlConnection.h"
#include "doctor/Report.h"
#include "doctor/RoundTrip.h"

#include <string>
#include <vector>

/// One question each; none changes anything on the server. A probe that is of no use, because of what the report
/// already says, leaves its facts untried.
namespace doctor {

/// What the server said instead of a welcome, or null.
const Reply* refusalToConnect(const ProbeResult& result, Scheme scheme);

/// Whether the server turned this one away, although others were welcome before; which is noted.
bool isTurnedAway(const ProbeResult& result, Report& report);

/// Asks about commands, in the directory of the URL, and returns the last transfer, whose transcript has all replies. A
/// command gets a name that no file has: a server that knows it looks for the file and finds none. Without a name, a
/// server might take its own idea of what is meant. A server that ends the connection at one costs at most two
/// more, for the others.
ProbeResult askAbout(std::vector<std::string> commands, const std::string& url, ControlConnection& connection);

/// The libcurl of this process.
void probeLibcurl(Report& report);

/// The name, the connection and the greeting of an SSH server.
void probeGreeting(const Access& access, Report& report);

/// The same, as the first probe of an FTP server saw them; with implicit TLS the greeting comes later.
void learnContact(const Access& access, const ProbeResult& first, Report& report);

/// The newest version of TLS that the server offers, of those from this one on, and the certificate. The first also
/// tells the name, the connection and the greeting.
void probeTls(const Access& access, std::size_t newest, Report& report);

/// What the connection test and the listing do, and then whether the server knows SIZE, what a session needs, rename
/// and rm: they get the name `missing`, which no file has. One login, by one who trusts the server. While it
/// lasts, a second connection is made as far as the welcome.
void probeLogin(const Access& access, const std::string& missing, Report& report);

/// Whether a login without TLS may begin: the user's name alone is sent. For ftp: URLs without the user's consent.
void probeClearUser(const Access& access, Report& report);

/// What the upload and the size check do to log in and to open a data connection. With an ftp: URL everything goes in
/// the clear, the password too: only with the user's consent. With a round trip, its file is sent over the same
/// connection.
void probeBareLogin(const Access& access, const std::string& missing, Report& report, const Save& save);

/// An SSH server's key, and what a session's file of known hosts says of it.
void probeHostKey(const Access& access, Report& report);

} // namespace doctor

#endif
