#include "TlsContexts.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <stdexcept>

namespace testserver {

namespace {

Memory readFrom(const std::string& text) { return Memory(BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))); }

bool useChain(SSL_CTX* context, const std::string& pem)
{
    const Memory memory = readFrom(pem);
    const Cert own(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
    if (own == nullptr || SSL_CTX_use_certificate(context, own.get()) != 1) {
        return false;
    }
    while (const Cert above{PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr)}) {
        if (SSL_CTX_add1_chain_cert(context, above.get()) != 1) {
            return false;
        }
    }
    // The last read ends with an error, which would otherwise be attributed to the next call.
    ERR_clear_error();
    return true;
}

bool useKey(SSL_CTX* context, const std::string& pem)
{
    const Memory memory = readFrom(pem);
    const Key key(PEM_read_bio_PrivateKey(memory.get(), nullptr, nullptr, nullptr));
    return key != nullptr && SSL_CTX_use_PrivateKey(context, key.get()) == 1;
}

void limitVersions(SSL_CTX* context, const ServerConfig& config)
{
    // Old versions are available only on request.
    if (config.maxTlsVersion != 0 && config.maxTlsVersion < TLS1_2_VERSION) {
        SSL_CTX_set_security_level(context, 0);
        SSL_CTX_set_min_proto_version(context, config.maxTlsVersion);
    }
    if (config.minTlsVersion != 0) {
        SSL_CTX_set_min_proto_version(context, config.minTlsVersion);
    }
    SSL_CTX_set_max_proto_version(context, config.maxTlsVersion);
}

TlsContext makeContext(const Certificate& certificate, const ServerConfig& config)
{
    TlsContext context(SSL_CTX_new(TLS_server_method()));
    if (!context || !useChain(context.get(), certificate.certificatePem) ||
        !useKey(context.get(), certificate.privateKeyPem)) {
        ERR_clear_error();
        throw std::runtime_error("The server's certificate and key cannot be used; with TLS it needs both, as PEM and "
                                 "belonging to each other.");
    }
    limitVersions(context.get(), config);
    static constexpr unsigned char kSessions[] = "ftp";
    SSL_CTX_set_session_id_context(context.get(), kSessions, sizeof(kSessions));
    return context;
}

} // namespace

TlsContexts::TlsContexts(const ServerConfig& config)
{
    if (config.tls == TlsMode::Plain) {
        return;
    }
    control = makeContext(config.certificate, config);
    if (config.tlsReuseRequired) {
        // One session cache for both.
        SSL_CTX_up_ref(control.get());
        data.reset(control.get());
        return;
    }
    data = makeContext(config.dataCertificate.value_or(config.certificate), config);
    if (!config.dataTickets) {
        SSL_CTX_set_num_tickets(data.get(), 0);
    }
}

} // namespace testserver
