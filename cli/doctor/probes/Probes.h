#ifndef SFTPCLIENT_CLI_DOCTOR_PROBES_PROBES_H
#define SFTPCLIENT_CLI_DOCTOR_PROBES_PROBES_H

#include "doctor/Access.h"
#include "doctor/Report.h"

#include <string>

/// One question each; none changes anything on the server. A probe that is of no use, because of what the report
/// already says, leaves its facts untried.
namespace doctor {

/// The libcurl of this process.
void probeLibcurl(Report& report);

/// The name, the connection and the greeting, which with implicit TLS comes after the handshake.
void probeContact(const Access& access, Report& report);

/// Each version of TLS, on a connection of its own, up to the end of the handshake; and the certificate.
void probeTls(const Access& access, Report& report);

/// What the connection test does, and on the way whether the server knows SIZE, rename and rm: they get the name
/// `missing`, which no file has.
void probeTest(const Access& access, const std::string& missing, Report& report);

/// What the listing does.
void probeListing(const Access& access, Report& report);

/// Whether a login without TLS may begin: the user's name alone is sent. For ftp: URLs without the user's consent.
void probeClearUser(const Access& access, Report& report);

/// What the upload and the size check do to log in and to open a data connection. With an ftp: URL everything goes in
/// the clear, the password too: only with the user's consent.
void probeBareLogin(const Access& access, const std::string& missing, Report& report);

/// The fingerprint of an SSH server's key.
void probeHostKey(const Access& access, Report& report);

} // namespace doctor

#endif
