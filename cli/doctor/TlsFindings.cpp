#include "doctor/Findings.h"

#include "doctor/Diagnosis.h"
#include "doctor/Predictions.h"

#include <curl/curl.h>

namespace doctor {

namespace {

using Findings = std::vector<Finding>;

void addHostKey(const Report& report, Findings& findings)
{
    findings.push_back({"TLS", Grade::None, "not applicable: SSH protects the connection"});
    if (report.hostKey.fingerprint.empty()) {
        findings.push_back({"host key", Grade::None, "not seen"});
        return;
    }
    const Grade untrusted = isHostKeyUnknown(report) ? Grade::Warn : Grade::Fail;
    findings.push_back({"host key", isHostKeyTrusted(report) ? Grade::Ok : untrusted, describeHostKey(report)});
}

void addRequest(const Report& report, Findings& findings)
{
    const Reply& reply = report.tls.auth;
    if (report.scheme == Scheme::Ftps) {
        findings.push_back({"request for TLS", Grade::None, "not applicable: TLS begins with the first byte"});
    } else if (reply.ending == Ending::NotTried) {
        findings.push_back({"request for TLS", Grade::None, "not tried"});
    } else {
        findings.push_back({"request for TLS", reply.isPositive() ? Grade::Ok : Grade::Fail,
                            reply.shown().empty() ? "no reply" : reply.shown()});
    }
}

Finding versionFinding(const TlsVersion& version, bool isOld)
{
    if (version.ending == Ending::NotTried) {
        return {version.name, Grade::None, "not tried" + (version.detail.empty() ? "" : ": " + version.detail)};
    }
    if (!version.offered) {
        return {version.name, Grade::None, "not offered: " + version.detail};
    }
    return {version.name, isOld ? Grade::Warn : Grade::Ok,
            "offered: " + version.detail + (isOld ? "; the library does not use it" : "")};
}

void addVersions(const Report& report, Findings& findings)
{
    const auto& versions = report.tls.versions;
    for (std::size_t i = 0; i < versions.size(); ++i) {
        findings.push_back(versionFinding(versions[i], i >= 2));
    }
    if (canLoseUploads(report)) {
        findings.push_back({"libcurl's uploads", Grade::Warn,
                            "this libcurl can lose the end of an upload over TLS 1.3; 8.14.1 does not"});
    }
}

void addChain(const Report& report, Findings& findings)
{
    for (const Certificate& each : report.tls.chain) {
        findings.push_back({"certificate", Grade::None,
                            each.subject.shown() + ", issued by " + each.issuer.shown() + ", valid from " +
                                each.notBefore + " to " + each.notAfter + ", serial " + each.serial.shown()});
    }
}

std::string whoIsTrusted(const Report& report)
{
    return report.trust == Trust::Certificate ? "the given CA or one in the machine's trust store"
                                              : "a CA in the machine's trust store";
}

void addTrust(const Report& report, Findings& findings)
{
    const ProbeResult& visit = report.client.test;
    if (!visit.made || report.tls.chain.empty()) {
        return;
    }
    if (report.trust == Trust::Nobody) {
        findings.push_back({"trust", Grade::Warn, "the server is not verified: CA none, and CertAuthSwitch is 0"});
        return;
    }
    const bool refused = visit.code == CURLE_PEER_FAILED_VERIFICATION || visit.code == CURLE_SSL_CACERT_BADFILE;
    if (refused) {
        findings.push_back({"trust", Grade::Fail, diagnoseVisit(report, visit, false).reason});
    } else if (visit.loggedIn() || visit.replyTo("USER") != nullptr) {
        findings.push_back({"trust", Grade::Ok, "the certificate is issued by " + whoIsTrusted(report)});
    }
}

void addName(const Report& report, Findings& findings)
{
    if (report.tls.chain.empty()) {
        return;
    }
    const std::string who = report.scheme == Scheme::Ftps
                                ? "; sessions compare it, of SFtpClient only the upload and the size check"
                                : "; sessions compare it, SFtpClient does not";
    const Grade unnamed = report.scheme == Scheme::Ftps ? Grade::Fail : Grade::None;
    findings.push_back(
        {"host name", report.tls.namesHost ? Grade::Ok : unnamed,
         "the certificate " + std::string(report.tls.namesHost ? "names " : "does not name ") + report.host + who});
}

} // namespace

void addSecurity(const Report& report, Findings& findings)
{
    if (report.scheme == Scheme::Sftp) {
        addHostKey(report, findings);
        return;
    }
    addRequest(report, findings);
    addVersions(report, findings);
    addChain(report, findings);
    addTrust(report, findings);
    addName(report, findings);
}

} // namespace doctor
