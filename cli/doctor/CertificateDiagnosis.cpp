#include "doctor/Diagnosis.h"

#include <openssl/x509_vfy.h>

namespace doctor {

namespace {

constexpr char kMachinesStore[] =
    "Add the server's CA to this machine's trust store: put it into /usr/local/share/ca-certificates with the ending "
    ".crt and run update-ca-certificates.";

// The certificate that would have to be trusted, or whose issuer would.
std::string issuerOf(const Report& report)
{
    return report.tls.chain.empty() ? "its issuer" : "\"" + report.tls.chain.back().issuer.shown() + "\"";
}

std::string remedyFor(const Report& report, long verdict, bool bare)
{
    switch (verdict) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return "Renew the certificate at the server.";
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return "Set the clocks of the server and of this machine right, or wait until the certificate is valid.";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        return bare ? kMachinesStore : "Give the host the CA certificate of " + issuerOf(report) + ".";
    default:
        return "Give the server another certificate.";
    }
}

} // namespace

Diagnosis diagnoseCertificate(const Report& report, const ProbeResult& visit, bool bare)
{
    const std::string store = bare ? ", and only this machine's trust store counts" : "";
    // libcurl compares the name only when the chain is good, and some versions leave no verdict then.
    const bool chainIsGood = visit.verifyResult == X509_V_OK || visit.verifyResult == X509_V_ERR_UNSPECIFIED;
    if (bare && chainIsGood && !report.tls.namesHost) {
        return {"the certificate does not name " + report.host + ", and this operation compares the name",
                "Use the name that the certificate has in the URL, or give the server one that names this host."};
    }
    if (!bare && report.tls.givenTrust == X509_V_OK) {
        const std::string anchor = "\"" + report.tls.anchor.shown() + "\"";
        return {"the certificate is issued by " + anchor +
                    ", and of the given certificates SFtpClient trusts the first alone, which is another",
                "Give the host the certificate of " + anchor + " alone, or as the first."};
    }
    return {std::string("the certificate is not trusted: ") + X509_verify_cert_error_string(visit.verifyResult) + store,
            remedyFor(report, visit.verifyResult, bare)};
}

Diagnosis diagnoseGivenTrust(const Report& report)
{
    const long verdict = report.tls.givenTrust;
    const std::string scope = report.trust == Trust::Certificate ? ", and a session trusts the given CA alone" : "";
    return {std::string("the certificate is not trusted: ") + X509_verify_cert_error_string(verdict) + scope,
            remedyFor(report, verdict, false)};
}

Diagnosis diagnoseCaFile(const Report& report, bool bare)
{
    if (!bare && report.trust == Trust::Unreadable) {
        return {"the given CA certificate cannot be read", "Give one certificate as PEM or DER."};
    }
    if (!bare && report.trust == Trust::NobodyRefused) {
        return {"there is no CA certificate, and the host's configuration demands one",
                "Give the server's CA certificate, or set CertAuthSwitch to 0 in section General to do without "
                "verification."};
    }
    return {"the machine's trust store cannot be read", "Install the package ca-certificates."};
}

} // namespace doctor
