#include "doctor/Findings.h"

#include "doctor/Diagnosis.h"
#include "doctor/Predictions.h"
#include "doctor/RoundTrip.h"

#include <boost/algorithm/string/join.hpp>
#include <curl/curl.h>

#include <algorithm>

namespace doctor {

namespace {

constexpr char kNotTried[] = "not tried";

using Findings = std::vector<Finding>;

void addLibcurl(const Report& report, Findings& findings)
{
    constexpr unsigned int kWaitsBeforeData = 0x075801;
    const Libcurl& libcurl = report.libcurl;
    findings.push_back(
        {"libcurl", libcurl.speaksScheme ? Grade::Ok : Grade::Fail,
         libcurl.version + " (" + libcurl.backEnds + ")" + (libcurl.speaksScheme ? "" : ", which knows no such URLs")});
    const bool dataOverTls = report.scheme != Scheme::Sftp && report.client.listing.succeeded();
    if (libcurl.number == kWaitsBeforeData && dataOverTls) {
        findings.push_back({"libcurl's pace", Grade::Warn,
                            "this libcurl waits 0.2 to 1 second before each transfer over TLS; 8.14.1 does not"});
    }
}

void addProxy(const Proxy& proxy, Findings& findings)
{
    if (proxy.variable.empty()) {
        return;
    }
    const std::string named = " the proxy that " + proxy.variable + " names";
    findings.push_back({"proxy", Grade::Warn,
                        (proxy.getsLogin ? "a host with this environment sends its login and data to" + named +
                                               ", the login in the clear"
                                         : "a host with this environment connects through" + named) +
                            "; doctor went around it"});
}

void addContact(const Report& report, Findings& findings)
{
    const Contact& contact = report.contact;
    if (contact.code == CURLE_OK && contact.addresses.empty()) {
        findings.push_back({"connection", Grade::None, "not seen"});
        return;
    }
    const bool found = contact.code != CURLE_COULDNT_RESOLVE_HOST && !contact.addresses.empty();
    findings.push_back(
        {"name", found ? Grade::Ok : Grade::Fail,
         found ? report.host + " is " + boost::join(contact.addresses, ", ") : diagnoseContact(report).reason});
    if (!found) {
        return;
    }
    const bool connected = contact.code == CURLE_OK;
    findings.push_back(
        {"connection", connected ? Grade::Ok : Grade::Fail,
         connected ? contact.address + " port " + std::to_string(report.port) : diagnoseContact(report).reason});
    if (contact.greeting.ending == Ending::NotTried) {
        return;
    }
    const bool welcome =
        report.scheme == Scheme::Sftp ? contact.greeting.ending == Ending::Complete : contact.greeting.isPositive();
    findings.push_back({"greeting", welcome ? Grade::Ok : Grade::Fail,
                        welcome ? contact.greeting.shown() : diagnoseContact(report).reason});
}

Finding loginFinding(const std::string& probe, const Report& report, const ProbeResult& visit, bool bare)
{
    if (!visit.made) {
        return {probe, Grade::None, kNotTried};
    }
    const bool loggedIn = report.scheme == Scheme::Sftp
                              ? visit.code == CURLE_OK || visit.code == CURLE_REMOTE_FILE_NOT_FOUND ||
                                    visit.code == CURLE_REMOTE_ACCESS_DENIED
                              : visit.loggedIn();
    return {probe, loggedIn ? Grade::Ok : Grade::Fail,
            loggedIn ? "accepted" : diagnoseVisit(report, visit, bare).reason};
}

Finding refusal(const std::string& probe, const Reply& reply, const std::string& sent)
{
    return {probe, Grade::Fail, "refused " + quote(reply) + sent};
}

Finding clearLoginWithConsent(const std::string& probe, const Report& report)
{
    const ProbeResult& visit = report.bare;
    const Reply* const password = visit.replyTo("PASS");
    const Reply* const user = visit.replyTo("USER");
    const std::string sent = password != nullptr ? "; the password was sent in the clear, as --clear-login allows" : "";
    if (visit.loggedIn() || user == nullptr) {
        Finding finding = loginFinding(probe, report, visit, true);
        finding.seen += sent;
        return finding;
    }
    return refusal(probe, password != nullptr ? *password : *user, sent);
}

Finding clearLogin(const Report& report)
{
    constexpr char kProbe[] = "login without TLS";
    constexpr char kSent[] = "; only the user's name was sent in the clear";
    if (report.bare.made) {
        return clearLoginWithConsent(kProbe, report);
    }
    const Reply& reply = report.clearUser;
    if (reply.ending == Ending::NotTried) {
        return {kProbe, Grade::None, kNotTried};
    }
    if (reply.ending != Ending::Complete || reply.code >= 400) {
        return refusal(kProbe, reply, kSent);
    }
    return {kProbe, Grade::Warn, "may begin " + quote(reply) + kSent};
}

Finding sizeFinding(const Report& report)
{
    const Reply* const reply = sizeReply(report);
    if (reply == nullptr || reply->ending != Ending::Complete) {
        return {"SIZE", Grade::None, kNotTried};
    }
    const bool known = reply->code == 550 || reply->code == 213;
    return {"SIZE", known ? Grade::Ok : Grade::Fail,
            (known ? "known; of a file that is not there: " : "not known: ") + reply->shown()};
}

Finding verbFinding(const Report& report, const std::string& verb)
{
    const Reply* const reply = report.client.commands.replyTo(verb + " ");
    if (reply == nullptr || reply->ending != Ending::Complete) {
        return {verb, Grade::None, kNotTried};
    }
    if (hasLookedForFile(*reply)) {
        return {verb, Grade::Ok, "known; of a file that is not there: " + reply->shown()};
    }
    return {verb, reply->code < 400 ? Grade::Warn : Grade::Fail,
            (reply->code < 400 ? "accepted for a file that is not there: " : "not known: ") + reply->shown()};
}

Finding listingFinding(const std::string& probe, const Report& report, const ProbeResult& visit)
{
    if (!visit.made || (!visit.loggedIn() && report.scheme != Scheme::Sftp)) {
        return {probe, Grade::None, kNotTried};
    }
    if (!visit.succeeded()) {
        return {probe, Grade::Fail, diagnoseVisit(report, visit, false).reason};
    }
    const std::size_t lines = visit.names.lines();
    return {probe, Grade::Ok,
            (visit.names.isCut() ? "at least " : "") + std::to_string(lines) + (lines == 1 ? " line" : " lines")};
}

void addLimit(const Report& report, Findings& findings)
{
    if (report.limit.ending != Ending::NotTried) {
        findings.push_back(
            {"connections", Grade::Warn,
             "the server turns away a second one " + quote(report.limit) +
                 ": it limits the connections of an address; set SessionOptions::maxConnections to 1, and "
                 "give push and pull --jobs 1"});
    } else if (report.turnedAway.ending != Ending::NotTried) {
        findings.push_back({"connections", Grade::Warn,
                            "the server turned one away after others " + quote(report.turnedAway) +
                                ", so it was made again after a pause: it limits the connections of an address; a "
                                "session then needs a lower SessionOptions::maxConnections"});
    }
}

void addVisits(const Report& report, Findings& findings)
{
    const bool ssh = report.scheme == Scheme::Sftp;
    findings.push_back(loginFinding(ssh ? "login" : "login over TLS", report, report.client.test, false));
    if (report.scheme == Scheme::Ftp) {
        findings.push_back(clearLogin(report));
    } else if (report.scheme == Scheme::Ftps) {
        findings.push_back(loginFinding("login by the machine's trust store", report, report.bare, true));
    }
    findings.push_back(listingFinding("listing in full", report, report.client.test));
    findings.push_back(listingFinding("listing of names", report, report.client.listing));
    if (!ssh) {
        findings.push_back(sizeFinding(report));
        findings.push_back(verbFinding(report, "rename"));
        findings.push_back(verbFinding(report, "rm"));
    }
}

bool isComplete(const RoundTrip& roundTrip)
{
    const StepResult& list = roundTrip[Step::List];
    return std::all_of(roundTrip.steps.begin(), roundTrip.steps.end(), [&list](const StepResult& each) {
        return (each.succeeded() && each.isGood) || (&each == &list && !each.code);
    });
}

void addRoundTrip(const std::string& probe, const RoundTrip& roundTrip, Findings& findings)
{
    if (isComplete(roundTrip)) {
        findings.push_back({probe, Grade::Ok,
                            std::string("a small file was sent,") + (roundTrip[Step::List].code ? " listed," : "") +
                                " fetched, renamed and removed"});
    }
    if (!roundTrip.notMade.empty()) {
        findings.push_back({probe, Grade::Warn, "not made: " + roundTrip.notMade});
    }
    if (!roundTrip.failure.empty()) {
        const std::string what = roundTrip.unfinished ? operationOf(*roundTrip.unfinished) : "round trip";
        findings.push_back({probe, Grade::Fail, "given up: the " + what + " " + roundTrip.failure});
    }
    const StepResult& list = roundTrip[Step::List];
    if (list.succeeded() && roundTrip[Step::Put].succeeded() && !list.isGood) {
        findings.push_back({probe, Grade::Warn, "the listing does not name the file that was sent"});
    }
    for (const std::string& name : roundTrip.leftBehind) {
        findings.push_back({"left behind", Grade::Fail, name + ": remove it by hand"});
    }
    if (roundTrip.leftUnknown) {
        findings.push_back(
            {"left behind", Grade::Fail,
             "perhaps " + whatMayBeLeft(roundTrip) + ": the server could not be asked; look, and remove them by hand"});
    }
}

} // namespace

std::vector<Finding> findingsOf(const Report& report)
{
    Findings findings;
    addLibcurl(report, findings);
    addProxy(report.proxy, findings);
    addContact(report, findings);
    if (report.contact.code == CURLE_OK) {
        addSecurity(report, findings);
        addLimit(report, findings);
        addVisits(report, findings);
    }
    if (report.roundTrip) {
        addRoundTrip("round trip", *report.roundTrip, findings);
    }
    if (report.sessionTrip) {
        addRoundTrip("session's round trip", *report.sessionTrip, findings);
    }
    return findings;
}

} // namespace doctor
