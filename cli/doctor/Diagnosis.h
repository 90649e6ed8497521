#ifndef SFTPCLIENT_CLI_DOCTOR_DIAGNOSIS_H
#define SFTPCLIENT_CLI_DOCTOR_DIAGNOSIS_H

#include "doctor/Report.h"

#include <string>

namespace doctor {

struct Diagnosis
{
    std::string reason;
    std::string remedy;
};

/// Why nobody gets as far as a login.
Diagnosis diagnoseContact(const Report& report);

/// Why a visit failed. `bare`: it was one without the library's TLS step.
Diagnosis diagnoseVisit(const Report& report, const ProbeResult& visit, bool bare);

/// Why a login without TLS is refused with this reply.
Diagnosis diagnoseClearLogin(const Reply& reply);

/// What the server refused with, where it refused a transfer itself: libcurl takes some such replies for those to EPSV.
/// Null where it did not.
const Reply* refusalOf(const ProbeResult& result);

/// What to do about a refusal, by its code; `permission` where the code says no more than that it is one.
std::string remedyFor(const Reply& reply, const std::string& permission);
constexpr char kMayNotList[] = "Let the user list that directory, at the server.";

/// What the server said, for a reason: "(530 TLS first)", or nothing.
std::string quote(const Reply& reply);

/// Whether an SSH server's directory may be entered, but not listed.
bool isUnlisted(const Login& login);

/// Whether the directory was seen to be missing: an upload would make it.
bool isDirectoryMissing(const Report& report);

/// Whether a session trusts the server's certificate.
bool isTrustedBySession(const Report& report);

/// Of all versions that the server offers, whether one is new enough for the library.
bool offersUsableTls(const Report& report);

/// Why a visit did not trust the server's certificate.
Diagnosis diagnoseCertificate(const Report& report, const ProbeResult& visit, bool bare);

/// Why a session does not trust it.
Diagnosis diagnoseGivenTrust(const Report& report);

/// Whether a session trusts an SSH server's key, and whether it is told nothing of it. REQUIRES: the key was seen.
bool isHostKeyTrusted(const Report& report);
bool isHostKeyUnknown(const Report& report);

/// Whether the server has another SSH host key than it should: somebody may be intercepting the connection, so that it
/// does not get the password.
bool isLoginWithheld(const Report& report);

/// The key, and what a session compares it with.
std::string describeHostKey(const Report& report);

/// Why a session does not trust it.
Diagnosis diagnoseHostKey(const Report& report);

/// Why the certificates to trust cannot be used.
Diagnosis diagnoseCaFile(const Report& report, bool bare);

/// Whether the server has fallen silent when it was asked for TLS.
bool isSilentInTls(const Report& report);

/// Whether the server has fallen silent before a login, or talks without an end: every visit would only wait once more.
bool isSilent(const Report& report);

} // namespace doctor

#endif
