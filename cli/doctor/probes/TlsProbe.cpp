#include "doctor/Conversation.h"
#include "doctor/probes/Probes.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <array>
#include <new>

namespace doctor {

namespace {

constexpr std::array<int, 4> kVersions = {TLS1_3_VERSION, TLS1_2_VERSION, TLS1_1_VERSION, TLS1_VERSION};

// Lets the version be spoken with whatever is left of cipher suites and keys: what the server offers is asked, not what
// is safe.
TlsContext contextFor(int version)
{
    TlsContext context(SSL_CTX_new(TLS_client_method()));
    if (!context) {
        throw std::bad_alloc();
    }
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_cipher_list(context.get(), "ALL:@SECLEVEL=0");
    SSL_CTX_set_min_proto_version(context.get(), version);
    SSL_CTX_set_max_proto_version(context.get(), version);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_NONE, nullptr);
    return context;
}

std::string contentOf(BIO* memory)
{
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory, &bytes);
    return std::string(bytes, static_cast<std::size_t>(length));
}

// As RFC 2253 writes names, but for control bytes, which are escaped where a name is shown.
std::string nameText(const X509_NAME* name)
{
    const MemoryBio memory(BIO_new(BIO_s_mem()));
    X509_NAME_print_ex(memory.get(), name, 0, XN_FLAG_ONELINE & ~(ASN1_STRFLGS_ESC_MSB | ASN1_STRFLGS_ESC_CTRL));
    return contentOf(memory.get());
}

std::string timeText(const ASN1_TIME* time)
{
    const MemoryBio memory(BIO_new(BIO_s_mem()));
    ASN1_TIME_print_ex(memory.get(), time, ASN1_DTFLGS_ISO8601);
    return contentOf(memory.get());
}

std::string serialText(const ASN1_INTEGER* serial)
{
    const MemoryBio memory(BIO_new(BIO_s_mem()));
    i2a_ASN1_INTEGER(memory.get(), serial);
    return contentOf(memory.get());
}

Certificate describe(const X509* certificate, const PasswordMask& mask)
{
    return {{nameText(X509_get_subject_name(certificate)), mask},
            {nameText(X509_get_issuer_name(certificate)), mask},
            {serialText(X509_get0_serialNumber(certificate)), mask},
            timeText(X509_get0_notBefore(certificate)),
            timeText(X509_get0_notAfter(certificate))};
}

void describeChain(SSL* session, const Access& access, Tls& tls)
{
    STACK_OF(X509)* const chain = SSL_get_peer_cert_chain(session);
    for (int i = 0; i < sk_X509_num(chain); ++i) {
        tls.chain.push_back(describe(sk_X509_value(chain, i), access.mask));
    }
    if (!tls.chain.empty()) {
        X509* const own = sk_X509_value(chain, 0);
        tls.namesHost = X509_check_ip_asc(own, access.host.c_str(), 0) == 1 ||
                        X509_check_host(own, access.host.c_str(), access.host.size(), 0, nullptr) == 1;
    }
}

// The library's libcurl asks for "SSL" first, by an old name, and then for "TLS".
Reply requestTls(Conversation& conversation)
{
    const Reply reply = conversation.ask("AUTH SSL");
    return reply.code >= 300 ? conversation.ask("AUTH TLS") : reply;
}

// False when no further version need be asked for.
bool tryVersion(const Access& access, int number, TlsVersion& version, Report& report)
{
    Conversation conversation(access);
    if (conversation.code() != CURLE_OK) {
        version.ending = Ending::Closed;
        version.detail = "the server takes no further connection";
        return false;
    }
    if (access.scheme == Scheme::Ftp) {
        if (!conversation.hear().isPositive()) {
            return false;
        }
        report.tls.auth = requestTls(conversation);
        if (!report.tls.auth.isPositive()) {
            return false;
        }
    }
    version.ending = conversation.startTls(contextFor(number).get());
    version.offered = version.ending == Ending::Complete;
    version.detail = version.offered ? SSL_get_cipher_name(conversation.tls()) : conversation.failure();
    if (version.offered && report.tls.chain.empty()) {
        describeChain(conversation.tls(), access, report.tls);
    }
    if (version.offered && access.scheme == Scheme::Ftps && report.contact.greeting.ending == Ending::NotTried) {
        report.contact.greeting = conversation.hear();
    }
    return version.ending != Ending::Silent;
}

} // namespace

void probeTls(const Access& access, Report& report)
{
    const bool greeted = access.scheme == Scheme::Ftps || report.contact.greeting.isPositive();
    if (access.scheme == Scheme::Sftp || report.contact.code != CURLE_OK || !greeted) {
        return;
    }
    std::size_t each = 0;
    while (each < kVersions.size() && tryVersion(access, kVersions[each], report.tls.versions[each], report)) {
        ++each;
    }
    ERR_clear_error();
}

} // namespace doctor
