#include "Certificates.h"

#include "OpenSslObjects.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>

#include <stdexcept>

namespace testserver {

namespace {

void require(bool done, const char* what)
{
    if (!done) {
        throw std::runtime_error(std::string("OpenSSL cannot ") + what + ": " +
                                 ERR_error_string(ERR_get_error(), nullptr));
    }
}

Key makeKey()
{
    Key key(EVP_EC_gen("P-256"));
    require(key != nullptr, "make a key");
    return key;
}

std::uint64_t randomSerial()
{
    unsigned char bytes[8];
    require(RAND_bytes(bytes, sizeof(bytes)) == 1, "make a serial number");
    std::uint64_t serial = 0;
    for (const unsigned char byte : bytes) {
        serial = serial << 8 | byte;
    }
    return serial >> 1;
}

void addExtension(X509* cert, X509* issuer, int kind, const std::string& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, cert, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    require(extension != nullptr && X509_add_ext(cert, extension.get(), -1) == 1, "add an extension");
}

// A certificate with everything but its extensions and signature.
Cert makeCertificate(EVP_PKEY* key, const std::string& commonName, const CertificateOptions& options)
{
    Cert cert(X509_new());
    require(cert != nullptr && X509_set_version(cert.get(), X509_VERSION_3) == 1, "make a certificate");
    const std::uint64_t serial = options.serial != 0 ? options.serial : randomSerial();
    require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(cert.get()), serial) == 1, "set a serial number");
    require(X509_gmtime_adj(X509_getm_notBefore(cert.get()), static_cast<long>(options.notBefore.count())) != nullptr &&
                X509_gmtime_adj(X509_getm_notAfter(cert.get()), static_cast<long>(options.notAfter.count())) != nullptr,
            "set a validity");
    require(X509_NAME_add_entry_by_txt(X509_get_subject_name(cert.get()), "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0) == 1,
            "set a name");
    require(X509_set_pubkey(cert.get(), key) == 1, "set a public key");
    return cert;
}

std::string nameOr(const char* usual, const CertificateOptions& options)
{
    return options.commonName.empty() ? usual : options.commonName;
}

std::string alternativeNames(const CertificateOptions& options)
{
    std::string names;
    for (const std::string& name : options.dnsNames) {
        names += (names.empty() ? "DNS:" : ",DNS:") + name;
    }
    for (const std::string& address : options.addresses) {
        names += (names.empty() ? "IP:" : ",IP:") + address;
    }
    return names;
}

void sign(X509* cert, X509* issuer, EVP_PKEY* issuerKey)
{
    require(X509_set_issuer_name(cert, X509_get_subject_name(issuer)) == 1 &&
                X509_sign(cert, issuerKey, EVP_sha256()) > 0,
            "sign a certificate");
}

std::string contentOf(BIO* memory)
{
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory, &bytes);
    return std::string(bytes, static_cast<std::size_t>(length));
}

std::string pemOf(X509* cert)
{
    const Memory memory(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_X509(memory.get(), cert) == 1, "write a certificate");
    return contentOf(memory.get());
}

std::string pemOf(EVP_PKEY* key)
{
    const Memory memory(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr) == 1, "write a key");
    return contentOf(memory.get());
}

void addServerExtensions(X509* cert, X509* issuer, const CertificateOptions& options)
{
    addExtension(cert, issuer, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(cert, issuer, NID_key_usage, "critical,digitalSignature");
    addExtension(cert, issuer, NID_ext_key_usage, "serverAuth");
    if (const std::string names = alternativeNames(options); !names.empty()) {
        addExtension(cert, issuer, NID_subject_alt_name, names);
    }
    addExtension(cert, issuer, NID_subject_key_identifier, "hash");
}

} // namespace

struct CertificateAuthority::Issuer
{
    Key key;
    Cert cert;
};

CertificateAuthority::CertificateAuthority(const std::string& commonName) : m_issuer(std::make_unique<Issuer>())
{
    m_issuer->key = makeKey();
    m_issuer->cert = makeCertificate(m_issuer->key.get(), commonName, {});
    X509* cert = m_issuer->cert.get();
    addExtension(cert, cert, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(cert, cert, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(cert, cert, NID_subject_key_identifier, "hash");
    sign(cert, cert, m_issuer->key.get());
}

CertificateAuthority::~CertificateAuthority() = default;
CertificateAuthority::CertificateAuthority(CertificateAuthority&&) noexcept = default;

std::string CertificateAuthority::certificatePem() const { return pemOf(m_issuer->cert.get()); }

std::string CertificateAuthority::certificateDer() const
{
    const Memory memory(BIO_new(BIO_s_mem()));
    require(i2d_X509_bio(memory.get(), m_issuer->cert.get()) == 1, "write a certificate");
    return contentOf(memory.get());
}

Certificate CertificateAuthority::issue(const CertificateOptions& options) const
{
    const Key key = makeKey();
    const Cert cert = makeCertificate(key.get(), nameOr("Test server", options), options);
    addServerExtensions(cert.get(), m_issuer->cert.get(), options);
    addExtension(cert.get(), m_issuer->cert.get(), NID_authority_key_identifier, "keyid");
    sign(cert.get(), m_issuer->cert.get(), m_issuer->key.get());
    return {pemOf(cert.get()), pemOf(key.get())};
}

Certificate makeSelfSigned(const CertificateOptions& options)
{
    const Key key = makeKey();
    const Cert cert = makeCertificate(key.get(), nameOr("Self-signed test server", options), options);
    addServerExtensions(cert.get(), cert.get(), options);
    sign(cert.get(), cert.get(), key.get());
    return {pemOf(cert.get()), pemOf(key.get())};
}

} // namespace testserver
