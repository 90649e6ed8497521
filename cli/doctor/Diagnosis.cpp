#include "doctor/Diagnosis.h"

#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>

#include <algorithm>

namespace doctor {

namespace {

std::string where(const Report& report)
{
    return (report.contact.address.empty() ? report.host : report.contact.address) + " port " +
           std::to_string(report.port);
}

Diagnosis diagnoseGreeting(const Report& report)
{
    const Reply& greeting = report.contact.greeting;
    if (greeting.code == 0 && boost::starts_with(greeting.text.raw(), "SSH-")) {
        return {"an SSH server answers there", "Use an sftp: URL, or the port of the FTP server."};
    }
    if (report.scheme == Scheme::Sftp) {
        return {"no SSH server answers there " + quote(greeting),
                "Use the port of the SSH server, or an ftp: or ftps: URL if this is an FTP server."};
    }
    if (greeting.ending == Ending::Silent) {
        const std::string remedy = report.scheme == Scheme::Ftps
                                       ? "Look at the server, or at a firewall before it."
                                       : "If it expects TLS from the first byte, use an ftps: URL; else look at the "
                                         "server, or at a firewall before it.";
        return {"the server accepts the connection and sends nothing", remedy};
    }
    return {"the server turns clients away " + quote(greeting),
            "Ask the server's administrator: it may have too many clients, or not want this machine's address."};
}

Diagnosis diagnoseHandshake(const Report& report, const ProbeResult& visit)
{
    const auto& versions = report.tls.versions;
    const bool oldOnly = !offersUsableTls(report) && std::any_of(versions.begin(), versions.end(),
                                                                 [](const TlsVersion& each) { return each.offered; });
    if (oldOnly) {
        return {"the server offers no TLS newer than 1.1, which this machine's OpenSSL refuses",
                "Turn on TLS 1.2 or 1.3 at the server."};
    }
    if (offersUsableTls(report)) {
        return {"the TLS handshake fails: " + visit.error.shown(), "Ask the server's administrator what its log says."};
    }
    return {"the server speaks no TLS there: " + visit.error.shown(),
            report.scheme == Scheme::Ftps
                ? "Use the port at which TLS begins with the first byte (990, as a rule), or an ftp: URL."
                : "Give the server a certificate and turn TLS on."};
}

Diagnosis diagnoseNoTls(const Report& report, const ProbeResult& visit)
{
    const Reply* const protection = visit.replyTo("PROT");
    if (protection != nullptr) {
        return {"the server refuses TLS for data connections " + quote(*protection), "Let the server accept PROT P."};
    }
    return {"the server offers no TLS " + quote(report.tls.auth),
            "Turn on explicit TLS (AUTH TLS) at the server, or use implicit TLS or SFTP if it has one of them."};
}

const Reply* loginReply(const ProbeResult& visit)
{
    const Reply* const reply = visit.replyTo("PASS");
    return reply != nullptr ? reply : visit.replyTo("USER");
}

Diagnosis diagnoseLogin(const Report& report, const ProbeResult& visit, bool bare)
{
    const Reply* const reply = loginReply(visit);
    if (bare && report.scheme == Scheme::Ftp && (report.client.test.loggedIn() || !visit.replyTo("PASS"))) {
        return diagnoseClearLogin(reply == nullptr ? Reply{} : *reply);
    }
    return {"the server refuses the login " + (reply == nullptr ? "(" + visit.error.shown() + ")" : quote(*reply)),
            "Check the user's name and the password, and whether the user may log in from this machine."};
}

Diagnosis diagnoseDirectory(const Report& report, const ProbeResult& visit)
{
    const Reply* const reply = visit.replyTo("CWD");
    if (report.scheme == Scheme::Sftp && visit.code == CURLE_REMOTE_ACCESS_DENIED) {
        const std::string what = isUnlisted(report.client) ? "list" : "enter or list";
        return {"the user may not " + what + " the directory (" + visit.error.shown() + ")",
                "Let the user " + what + " that directory, at the server."};
    }
    return {
        "the directory of the URL cannot be entered " +
            (reply == nullptr ? "(" + visit.error.shown() + ")" : quote(*reply)),
        report.scheme == Scheme::Sftp
            ? "Make the directory on the server, or correct the URL, whose path counts from the server's root."
            : "Make the directory on the server, or correct the URL, whose path counts from the login's directory."};
}

Diagnosis diagnoseData(const ProbeResult& visit)
{
    return {
        "the data connection fails: " + visit.error.shown(),
        "Open the server's range of passive ports in every firewall on the way, let the server announce the address "
        "that this machine sees, and let it use the same certificate there."};
}

Diagnosis diagnoseListing(const ProbeResult& visit)
{
    const Reply* const reply = refusalOf(visit);
    return {"the server refuses to list the directory " +
                (reply == nullptr ? "(" + visit.error.shown() + ")" : quote(*reply)),
            remedyFor(reply == nullptr ? Reply{} : *reply, kMayNotList)};
}

// 28: libcurl's word for silence and for every 421 alike.
Diagnosis diagnoseTimeout(const Report& report, const ProbeResult& visit, bool bare)
{
    const Reply* const last = visit.lastReply();
    if (visit.replyTo("AUTH") == nullptr && visit.replyTo("USER") == nullptr && last != nullptr) {
        return diagnoseGreeting(report);
    }
    if (last == nullptr || last->code != 421) {
        return {"the server does not answer in time", "Look at the server, or at a firewall before it."};
    }
    if (bare && report.scheme == Scheme::Ftp && !visit.loggedIn() && visit.replyTo("USER") != nullptr) {
        return diagnoseClearLogin(*last);
    }
    return {"the server ends the connection " + quote(*last), "Ask the server's administrator what its log says."};
}

} // namespace

std::string remedyFor(const Reply& reply, const std::string& permission)
{
    switch (reply.code) {
    case 421:
        return "Ask the server's administrator what its log says; it may limit the connections.";
    case 452:
    case 552:
        return "Free space at the server for that user, or have the quota raised.";
    default:
        return permission;
    }
}

const Reply* refusalOf(const ProbeResult& result)
{
    const Reply* const names = result.replyTo("NLST");
    const Reply* const reply = names != nullptr ? names : result.replyTo("LIST");
    const bool isRefused = reply != nullptr && reply->ending == Ending::Complete && reply->code >= 400;
    const bool isItsCode = result.code == CURLE_FTP_COULDNT_RETR_FILE || result.code == CURLE_FTP_WEIRD_PASV_REPLY;
    return isRefused && isItsCode ? reply : nullptr;
}

std::string quote(const Reply& reply)
{
    const std::string said = reply.shown();
    return said.empty() ? "(no reply)" : "(" + said + ")";
}

bool isUnlisted(const Login& login) { return login.missing.made && login.missing.code == CURLE_REMOTE_FILE_NOT_FOUND; }

bool isDirectoryMissing(const Report& report)
{
    return report.client.test.code == CURLE_REMOTE_ACCESS_DENIED || report.bare.code == CURLE_REMOTE_ACCESS_DENIED ||
           report.client.test.code == CURLE_REMOTE_FILE_NOT_FOUND;
}

bool isSilentInTls(const Report& report)
{
    const auto& versions = report.tls.versions;
    return report.tls.auth.ending == Ending::Silent ||
           std::any_of(versions.begin(), versions.end(),
                       [](const TlsVersion& each) { return each.ending == Ending::Silent; });
}

bool isSilent(const Report& report)
{
    const Ending greeting = report.contact.greeting.ending;
    return greeting == Ending::Silent || greeting == Ending::Garbled || isSilentInTls(report);
}

bool isTrustedBySession(const Report& report)
{
    return report.trust == Trust::Certificate && report.tls.givenTrust == 0 && report.tls.namesHost;
}

bool offersUsableTls(const Report& report) { return report.tls.versions[0].offered || report.tls.versions[1].offered; }

Diagnosis diagnoseContact(const Report& report)
{
    if (!report.libcurl.speaksScheme) {
        return {"this libcurl knows no such URLs", "Run the host with a libcurl that does, such as Debian's."};
    }
    switch (report.contact.code) {
    case CURLE_OK:
        return diagnoseGreeting(report);
    case CURLE_COULDNT_RESOLVE_HOST:
        return {"the name " + report.host + " has no address",
                "Correct the URL's host, or this machine's name service."};
    case CURLE_OPERATION_TIMEDOUT:
        return {"nothing answers at " + where(report),
                "Check the server's address and port, and every firewall on the way."};
    default:
        return {"the connection to " + where(report) + " is refused",
                "Start the server, or correct the port, or let a firewall on the way pass it."};
    }
}

Diagnosis diagnoseClearLogin(const Reply& reply)
{
    return {"it logs in without TLS, which the server refuses " + quote(reply),
            "Use implicit TLS, with an ftps: URL, or SFTP; or allow logins without TLS at the server, which then sees "
            "the password in the clear."};
}

Diagnosis diagnoseVisit(const Report& report, const ProbeResult& visit, bool bare)
{
    if (!visit.made) {
        return isSilentInTls(report)
                   ? Diagnosis{"the server falls silent when TLS is to begin",
                               "Look at the server, or at a firewall before it; for an ftps: URL, the "
                               "port must be one at which TLS begins with the first byte."}
                   : diagnoseContact(report);
    }
    switch (visit.code) {
    case CURLE_WEIRD_SERVER_REPLY:
        return visit.replyTo("AUTH") != nullptr ? diagnoseHandshake(report, visit) : diagnoseGreeting(report);
    case CURLE_PEER_FAILED_VERIFICATION:
        return diagnoseCertificate(report, visit, bare);
    case CURLE_SSL_CACERT_BADFILE:
        return diagnoseCaFile(report, bare);
    case CURLE_USE_SSL_FAILED:
        return diagnoseNoTls(report, visit);
    case CURLE_LOGIN_DENIED:
        return diagnoseLogin(report, visit, bare);
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_REMOTE_FILE_NOT_FOUND:
        return diagnoseDirectory(report, visit);
    case CURLE_FTP_COULDNT_RETR_FILE:
        return diagnoseListing(visit);
    case CURLE_OPERATION_TIMEDOUT:
        return diagnoseTimeout(report, visit, bare);
    case CURLE_SSL_CONNECT_ERROR:
        return visit.loggedIn() ? diagnoseData(visit) : diagnoseHandshake(report, visit);
    case CURLE_FTP_WEIRD_PASV_REPLY:
        return refusalOf(visit) != nullptr ? diagnoseListing(visit) : diagnoseData(visit);
    default:
        return visit.loggedIn() ? diagnoseData(visit)
                                : Diagnosis{"the connection fails: " + visit.error.shown(),
                                            "Ask the server's administrator what its log says."};
    }
}

} // namespace doctor
