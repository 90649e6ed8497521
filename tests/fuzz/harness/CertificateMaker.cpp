#include "harness/CertificateMaker.h"

#include "harness/Require.h"

#include "server/OpenSslObjects.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <memory>
#include <vector>

namespace {

using testserver::Cert;
using testserver::Extension;
using testserver::Key;
using testserver::Memory;

// Made once, because that takes longer than everything else.
const std::vector<Key>& keys()
{
    static const std::vector<Key> keys = [] {
        std::vector<Key> made;
        made.emplace_back(EVP_EC_gen("P-256"));
        made.emplace_back(EVP_EC_gen("P-384"));
        made.emplace_back(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"));
        made.emplace_back(EVP_RSA_gen(1024));
        return made;
    }();
    return keys;
}

// An unknown type has no digest of its own.
const EVP_MD* digestFor(EVP_PKEY* key, Dice& dice)
{
    static const std::vector<const EVP_MD*> digests = {EVP_sha256(), EVP_sha1(), EVP_sha512()};
    return EVP_PKEY_get_id(key) == EVP_PKEY_ED25519 ? nullptr : dice.among(digests);
}

// OpenSSL makes no certificate from these kinds of text unless they are right.
std::string rightText(std::string text, int kind)
{
    if (kind == V_ASN1_UTF8STRING && text[0] == '\xff') {
        return "\xc3\xa4";
    }
    return kind == V_ASN1_BMPSTRING && text.size() % 2 != 0 ? text + "x" : text;
}

void addName(X509_NAME* name, Dice& dice)
{
    static const std::vector<int> fields = {NID_commonName,   NID_organizationName, NID_countryName,
                                            NID_serialNumber, NID_domainComponent,  NID_pkcs9_emailAddress};
    static const std::vector<int> kinds = {V_ASN1_UTF8STRING, V_ASN1_PRINTABLESTRING, V_ASN1_T61STRING,
                                           V_ASN1_BMPSTRING, V_ASN1_IA5STRING};
    static const std::vector<std::string> texts = {
        "authority", "", "-----BEGIN CERTIFICATE-----", "none", "\xff\xfe", std::string("a\0b", 3), "*.example.com"};
    for (std::size_t left = dice.below(4); left > 0; --left) {
        const int kind = dice.among(kinds);
        const std::string text =
            rightText(dice.onceIn(8) ? std::string(dice.below(400), 'n') : dice.among(texts), kind);
        X509_NAME_add_entry_by_NID(name, dice.among(fields), kind, reinterpret_cast<const unsigned char*>(text.data()),
                                   static_cast<int>(text.size()), -1, dice.onceIn(4) ? -1 : 0);
    }
}

void setTimes(X509* certificate, Dice& dice)
{
    static const std::vector<std::string> times = {"20000101000000Z", "20491231235959Z", "20500101000000Z",
                                                   "00010101000000Z", "99991231235959Z", "20260102030405Z"};
    ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate), dice.among(times).c_str());
    ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate), dice.among(times).c_str());
}

void addExtensions(X509* certificate, Dice& dice)
{
    static const std::vector<std::pair<int, const char*>> known = {
        {NID_basic_constraints, "critical,CA:TRUE"},
        {NID_basic_constraints, "CA:FALSE"},
        {NID_basic_constraints, "CA:TRUE,pathlen:0"},
        {NID_key_usage, "critical,keyCertSign,cRLSign"},
        {NID_key_usage, "digitalSignature"},
        {NID_ext_key_usage, "serverAuth,clientAuth"},
        {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,email:a@b,URI:ftp://x"},
        {NID_subject_alt_name, "DNS:-----BEGIN"},
        {NID_subject_key_identifier, "hash"},
        {NID_name_constraints, "permitted;DNS:example.com"},
        {NID_info_access, "OCSP;URI:http://x"},
        {NID_netscape_comment, "-----BEGIN"},
    };
    X509V3_CTX context;
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    for (std::size_t left = dice.below(5); left > 0; --left) {
        const auto& [kind, text] = dice.among(known);
        const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, text));
        X509_add_ext(certificate, extension.get(), -1);
    }
    if (dice.onceIn(3)) {
        const std::string bytes = dice.bytes(dice.below(60));
        ASN1_OCTET_STRING* const content = ASN1_OCTET_STRING_new();
        ASN1_OCTET_STRING_set(content, reinterpret_cast<const unsigned char*>(bytes.data()),
                              static_cast<int>(bytes.size()));
        const Extension extension(
            X509_EXTENSION_create_by_NID(nullptr, NID_netscape_cert_type, dice.onceIn(2) ? 1 : 0, content));
        ASN1_OCTET_STRING_free(content);
        X509_add_ext(certificate, extension.get(), -1);
    }
}

void setSerialNumber(X509* certificate, Dice& dice)
{
    const std::string bytes = dice.bytes(1 + dice.below(24));
    BIGNUM* const number =
        BN_bin2bn(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()), nullptr);
    BN_set_negative(number, dice.onceIn(6) ? 1 : 0);
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
    BN_free(number);
}

std::string contentOf(BIO* memory)
{
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory, &bytes);
    return std::string(bytes, static_cast<std::size_t>(length));
}

} // namespace

std::string makeCertificate(Dice& dice)
{
    const Cert certificate(X509_new());
    EVP_PKEY* const key = dice.among(keys()).get();
    X509_set_version(certificate.get(), static_cast<long>(dice.onceIn(6) ? dice.below(4) : X509_VERSION_3));
    setSerialNumber(certificate.get(), dice);
    setTimes(certificate.get(), dice);
    addName(X509_get_subject_name(certificate.get()), dice);
    if (dice.onceIn(3)) {
        addName(X509_get_issuer_name(certificate.get()), dice);
    } else {
        X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    }
    X509_set_pubkey(certificate.get(), key);
    addExtensions(certificate.get(), dice);
    require(X509_sign(certificate.get(), key, digestFor(key, dice)) > 0, "the certificate is signed");
    const Memory memory(BIO_new(BIO_s_mem()));
    i2d_X509_bio(memory.get(), certificate.get());
    ERR_clear_error(); // names refuse some texts
    return contentOf(memory.get());
}

std::string pemOf(const std::string& der)
{
    const Memory memory(BIO_new(BIO_s_mem()));
    PEM_write_bio(memory.get(), "CERTIFICATE", "", reinterpret_cast<const unsigned char*>(der.data()),
                  static_cast<long>(der.size()));
    return contentOf(memory.get());
}

std::string derOf(const std::string& pem)
{
    const Memory memory(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long length = 0;
    std::string der;
    if (PEM_read_bio(memory.get(), &name, &header, &data, &length) == 1) {
        der.assign(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    }
    OPENSSL_free(name);
    OPENSSL_free(header);
    OPENSSL_free(data);
    ERR_clear_error();
    return der;
}
