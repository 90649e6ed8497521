#include "support/RecordedOpenSsl.h"

#include "support/Journal.h"
#include "support/Memory.h"
#include "support/NextFunction.h"
#include "support/ScriptedCurl.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace recorded {

OpenSsl& openSsl()
{
    static OpenSsl instance;
    return instance;
}

unsigned long leaveHostsError()
{
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, ERR_R_FATAL);
    return ERR_peek_error();
}

std::vector<unsigned long> takeErrors()
{
    std::vector<unsigned long> errors;
    for (unsigned long error = 0; (error = ERR_get_error()) != 0;) {
        errors.push_back(error);
    }
    return errors;
}

namespace {

// Notes one call of the library, not OpenSSL's internal calls; false if it is to fail.
bool noteCall(const std::string& name, const std::string& about, bool starved = false)
{
    const bool fails = starved || openSsl().fails == name;
    journal::note(name + about + (fails ? " fails" : ""));
    return !fails;
}

std::string nameOf(const void* pointer)
{
    const auto known = scripted::curl().names.find(pointer);
    return known == scripted::curl().names.end() ? " unknown" : " " + known->second;
}

} // namespace
} // namespace recorded

using namespace recorded;

extern "C" BIO* BIO_new_mem_buf(const void* bytes, int length)
{
    const auto real = nextFunction<BIO*(const void*, int)>("BIO_new_mem_buf");
    if (!memory::watched()) {
        return real(bytes, length);
    }
    const bool starved = memory::unmet("BIO_new_mem_buf");
    const memory::Pause pause;
    openSsl().bytes = bytes;
    const std::string name = "BIO_new_mem_buf " + std::to_string(++openSsl().buffers);
    if (!noteCall(name, " of " + std::to_string(length) + " bytes", starved)) {
        return nullptr;
    }
    BIO* buffer = real(bytes, length);
    scripted::curl().names[buffer] = "buffer " + std::to_string(openSsl().buffers);
    return buffer;
}

extern "C" int BIO_free(BIO* buffer)
{
    const memory::Pause pause;
    const auto known = scripted::curl().names.find(buffer);
    if (known != scripted::curl().names.end()) {
        journal::note("BIO_free " + known->second);
        scripted::curl().names.erase(known);
    }
    return nextFunction<int(BIO*)>("BIO_free")(buffer);
}

extern "C" X509* PEM_read_bio_X509(BIO* buffer, X509** out, pem_password_cb* password, void* about)
{
    const auto real = nextFunction<X509*(BIO*, X509**, pem_password_cb*, void*)>("PEM_read_bio_X509");
    if (!memory::watched()) {
        return real(buffer, out, password, about);
    }
    const bool starved = memory::unmet("PEM_read_bio_X509");
    const memory::Pause pause;
    const bool bare = out == nullptr && password == nullptr && about == nullptr;
    if (!noteCall("PEM_read_bio_X509", nameOf(buffer) + (bare ? "" : " with arguments"), starved)) {
        return nullptr;
    }
    X509* cert = real(buffer, out, password, about);
    if (cert != nullptr) {
        scripted::curl().names[cert] = "PEM certificate";
    }
    return cert;
}

extern "C" X509* d2i_X509_bio(BIO* buffer, X509** out)
{
    const auto real = nextFunction<X509*(BIO*, X509**)>("d2i_X509_bio");
    if (!memory::watched()) {
        return real(buffer, out);
    }
    const bool starved = memory::unmet("d2i_X509_bio");
    const memory::Pause pause;
    if (!noteCall("d2i_X509_bio", nameOf(buffer) + (out == nullptr ? "" : " with argument"), starved)) {
        return nullptr;
    }
    X509* cert = real(buffer, out);
    if (cert != nullptr) {
        scripted::curl().names[cert] = "DER certificate";
    }
    return cert;
}

extern "C" X509_STORE* SSL_CTX_get_cert_store(const SSL_CTX* context)
{
    const auto real = nextFunction<X509_STORE*(const SSL_CTX*)>("SSL_CTX_get_cert_store");
    if (!memory::watched()) {
        return real(context);
    }
    const memory::Pause pause;
    return noteCall("SSL_CTX_get_cert_store", nameOf(context)) ? real(context) : nullptr;
}

extern "C" int X509_STORE_add_cert(X509_STORE* store, X509* cert)
{
    const auto real = nextFunction<int(X509_STORE*, X509*)>("X509_STORE_add_cert");
    if (!memory::watched()) {
        return real(store, cert);
    }
    const bool starved = memory::unmet("X509_STORE_add_cert");
    const memory::Pause pause;
    return noteCall("X509_STORE_add_cert", nameOf(cert), starved) ? real(store, cert) : 0;
}

extern "C" void X509_free(X509* cert)
{
    const memory::Pause pause;
    const auto known = scripted::curl().names.find(cert);
    if (cert != nullptr && known != scripted::curl().names.end()) {
        journal::note("X509_free " + known->second);
        scripted::curl().names.erase(known);
    }
    nextFunction<void(X509*)>("X509_free")(cert);
}
