#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <array>
#include <exception>
#include <memory>

namespace doctor {

namespace {

constexpr std::array<int, 4> kVersions = {TLS1_3_VERSION, TLS1_2_VERSION, TLS1_1_VERSION, TLS1_VERSION};

// As RFC 2253 writes names, but for control bytes, which are escaped where a name is shown.
std::string nameText(const X509_NAME* name)
{
    constexpr unsigned long kFlags = XN_FLAG_ONELINE & ~(ASN1_STRFLGS_ESC_MSB | ASN1_STRFLGS_ESC_CTRL);
    return printed([name](BIO* out) { X509_NAME_print_ex(out, name, 0, kFlags); });
}

std::string timeText(const ASN1_TIME* time)
{
    return printed([time](BIO* out) { ASN1_TIME_print_ex(out, time, ASN1_DTFLGS_ISO8601); });
}

std::string serialText(const ASN1_INTEGER* serial)
{
    return printed([serial](BIO* out) { i2a_ASN1_INTEGER(out, serial); });
}

Certificate describe(const X509* certificate, const PasswordMask& mask)
{
    return {{nameText(X509_get_subject_name(certificate)), mask},
            {nameText(X509_get_issuer_name(certificate)), mask},
            {serialText(X509_get0_serialNumber(certificate)), mask},
            timeText(X509_get0_notBefore(certificate)),
            timeText(X509_get0_notAfter(certificate))};
}

bool hasAlternativeNames(const X509* certificate)
{
    const std::unique_ptr<GENERAL_NAMES, decltype(&GENERAL_NAMES_free)> names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)),
        GENERAL_NAMES_free);
    for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const int type = sk_GENERAL_NAME_value(names.get(), i)->type;
        if (type == GEN_DNS || type == GEN_IPADD) {
            return true;
        }
    }
    return false;
}

// As libcurl compares, more strictly than OpenSSL: any alternative name rules out the common name, and an address is
// none of the DNS names.
bool namesHost(X509* certificate, const std::string& host)
{
    if (X509_check_ip_asc(certificate, host.c_str(), 0) == 1) {
        return true;
    }
    const bool hasAlternatives = hasAlternativeNames(certificate);
    const std::unique_ptr<ASN1_OCTET_STRING, decltype(&ASN1_OCTET_STRING_free)> address(a2i_IPADDRESS(host.c_str()),
                                                                                        ASN1_OCTET_STRING_free);
    if (hasAlternatives && address) {
        return false;
    }
    const unsigned flags = hasAlternatives ? X509_CHECK_FLAG_NEVER_CHECK_SUBJECT : 0;
    return X509_check_host(certificate, host.c_str(), host.size(), flags, nullptr) == 1;
}

/// A handshake that goes on until the server's certificate has been seen, and is refused then.
class Handshake
{
public:
    /// `newest`: of the versions that are offered, by its place among them all.
    Handshake(const Access& access, Report& report, std::size_t newest)
        : m_access(access), m_report(report), m_newest(newest)
    {
        ControlConnection connection(access, Manner::Handshake);
        curl_easy_setopt(connection.handle(), CURLOPT_SSL_CTX_FUNCTION, prepare);
        curl_easy_setopt(connection.handle(), CURLOPT_SSL_CTX_DATA, this);
        result = connection.run({access.request.remotePath, Transfer::What::Nothing});
        result.connected = result.connected || m_isBegun; // of implicit TLS, libcurl takes it for a part of connecting
    }
    Handshake(const Handshake&) = delete;
    Handshake& operator=(const Handshake&) = delete;

    ProbeResult result;
    std::size_t version = kVersions.size(); ///< the one that the server chose; none: past the last
    std::string cipher;

private:
    // Lets every version be spoken with whatever is left of cipher suites and keys: what the server offers is asked,
    // not what is safe.
    static CURLcode prepare(CURL* /*handle*/, void* context, void* self) noexcept
    {
        static_cast<Handshake*>(self)->m_isBegun = true;
        auto* const tls = static_cast<SSL_CTX*>(context);
        SSL_CTX_set_security_level(tls, 0);
        SSL_CTX_set_cipher_list(tls, "ALL:!aNULL:@SECLEVEL=0");
        SSL_CTX_set_min_proto_version(tls, kVersions.back());
        SSL_CTX_set_max_proto_version(tls, kVersions[static_cast<Handshake*>(self)->m_newest]);
        SSL_CTX_set_app_data(tls, self);
        SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, judge);
        return CURLE_OK;
    }

    // Called for each certificate that is found good, down to the server's own, or for the first that is not.
    static int judge(int good, X509_STORE_CTX* store) noexcept
    try {
        const bool isLast = good == 0 || X509_STORE_CTX_get_error_depth(store) == 0;
        if (isLast) {
            auto* const session =
                static_cast<SSL*>(X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx()));
            static_cast<Handshake*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(session)))->record(session, store, good != 0);
        }
        return isLast ? 0 : 1;
    } catch (const std::exception&) {
        return 0;
    }

    void record(SSL* session, X509_STORE_CTX* store, bool good)
    {
        version = m_newest;
        while (version + 1 < kVersions.size() && kVersions[version] != SSL_version(session)) {
            ++version;
        }
        // Not in use yet before TLS 1.3.
        const SSL_CIPHER* const pending = SSL_get_pending_cipher(session);
        cipher = SSL_CIPHER_get_name(pending != nullptr ? pending : SSL_get_current_cipher(session));
        Tls& tls = m_report.tls;
        if (!tls.chain.empty()) {
            return;
        }
        tls.givenTrust = good ? X509_V_OK : X509_STORE_CTX_get_error(store);
        STACK_OF(X509)* const verified = X509_STORE_CTX_get0_chain(store);
        if (good && sk_X509_num(verified) > 0) {
            const X509* const top = sk_X509_value(verified, sk_X509_num(verified) - 1);
            tls.anchor = {nameText(X509_get_subject_name(top)), m_access.mask};
        }
        STACK_OF(X509)* const chain = X509_STORE_CTX_get0_untrusted(store);
        for (int i = 0; i < sk_X509_num(chain); ++i) {
            tls.chain.push_back(describe(sk_X509_value(chain, i), m_access.mask));
        }
        tls.namesHost = namesHost(X509_STORE_CTX_get0_cert(store), m_access.host);
    }

    const Access& m_access;
    Report& m_report;
    std::size_t m_newest;
    bool m_isBegun = false;
};

std::string nameOf(std::size_t version) { return Tls().versions[version].name; }

std::string failureOf(const ProbeResult& result)
{
    const std::string error = result.error.raw();
    const std::string::size_type reason = error.rfind("::");
    if (result.code == CURLE_OPERATION_TIMEDOUT) {
        return "the server does not answer";
    }
    return reason == std::string::npos ? "the server closes the connection" : error.substr(reason + 2);
}

void learn(const Handshake& handshake, std::size_t newest, Report& report)
{
    auto& versions = report.tls.versions;
    for (std::size_t i = newest; i < handshake.version; ++i) {
        const bool late = handshake.result.code == CURLE_OPERATION_TIMEDOUT;
        versions[i].ending = late ? Ending::Silent : Ending::Closed;
        versions[i].detail = handshake.version < versions.size() ? "the server chooses " + nameOf(handshake.version)
                                                                 : failureOf(handshake.result);
        if (late) {
            return;
        }
    }
    if (handshake.version < versions.size()) {
        TlsVersion& chosen = versions[handshake.version];
        chosen.ending = Ending::Complete;
        chosen.offered = true;
        chosen.detail = handshake.cipher;
    }
}

} // namespace

void probeTls(const Access& access, std::size_t newest, Report& report)
{
    const Handshake handshake(access, report, newest);
    const ProbeResult& result = handshake.result;
    if (newest > 0 && isTurnedAway(result, report)) {
        return;
    }
    if (newest == 0) {
        learnContact(access, result, report);
    }
    if (const Reply* const auth = result.replyTo("AUTH")) {
        report.tls.auth = *auth;
    }
    const bool greeted = access.scheme == Scheme::Ftps || report.contact.greeting.isPositive();
    const bool asked = access.scheme == Scheme::Ftps || report.tls.auth.isPositive();
    if (result.code == CURLE_SSL_CACERT_BADFILE) {
        report.tls.caFails = true;
        report.tls.versions[newest].detail = "libcurl cannot use the CA certificates";
    } else if (result.connected && greeted && asked) {
        learn(handshake, newest, report);
    }
    ERR_clear_error();
}

} // namespace doctor
