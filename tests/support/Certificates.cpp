#include "support/Certificates.h"

#include <openssl/pem.h>

namespace certificates {

namespace {

std::string bytesOf(BIO* buffer)
{
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(buffer, &bytes);
    return std::string(bytes, static_cast<std::size_t>(length));
}

long serialOf(const X509* cert) { return ASN1_INTEGER_get(X509_get0_serialNumber(cert)); }

} // namespace

Certificate make(long serial)
{
    const testserver::Key key(EVP_EC_gen("P-256"));
    Certificate cert(X509_new());
    X509_set_version(cert.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), -60);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), 3600);
    const std::string name = "authority " + std::to_string(serial);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(cert.get()), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_set_issuer_name(cert.get(), X509_get_subject_name(cert.get()));
    X509_set_pubkey(cert.get(), key.get());
    X509_sign(cert.get(), key.get(), EVP_sha256());
    return cert;
}

std::string pemOf(X509* cert)
{
    const testserver::Memory buffer(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(buffer.get(), cert);
    return bytesOf(buffer.get());
}

std::string derOf(X509* cert)
{
    const testserver::Memory buffer(BIO_new(BIO_s_mem()));
    i2d_X509_bio(buffer.get(), cert);
    return bytesOf(buffer.get());
}

std::string serialsIn(SSL_CTX* context)
{
    std::string serials;
    const STACK_OF(X509_OBJECT)* objects = X509_STORE_get0_objects(SSL_CTX_get_cert_store(context));
    for (int i = 0; i < sk_X509_OBJECT_num(objects); ++i) {
        serials += std::to_string(serialOf(X509_OBJECT_get0_X509(sk_X509_OBJECT_value(objects, i)))) + " ";
    }
    return serials;
}

} // namespace certificates
