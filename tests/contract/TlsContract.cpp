#include "harness/Contract.h"

#include "tls/TlsTrust.h"
#include "transfer/CurlSFtpResponse.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>
#include <vector>

namespace {

using Errors = std::vector<unsigned long>;

const unsigned long kNoPem = ERR_PACK(ERR_LIB_PEM, 0, PEM_R_NO_START_LINE);

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};
using Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY, EVP_PKEY_free>>;
using Context = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX, SSL_CTX_free>>;
using Memory = std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>>;

Certificate makeCertificate(long serial)
{
    const Key key(EVP_EC_gen("P-256"));
    Certificate cert(X509_new());
    ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), -60);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), 3600);
    X509_set_pubkey(cert.get(), key.get());
    X509_sign(cert.get(), key.get(), EVP_sha256());
    return cert;
}

std::string bytesOf(BIO* memory)
{
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory, &bytes);
    return std::string(bytes, static_cast<std::size_t>(length));
}

std::string pemOf(X509* cert)
{
    const Memory memory(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(memory.get(), cert);
    return bytesOf(memory.get());
}

std::string derOf(X509* cert)
{
    const Memory memory(BIO_new(BIO_s_mem()));
    i2d_X509_bio(memory.get(), cert);
    return bytesOf(memory.get());
}

class TlsContract : public Contract
{
protected:
    TlsContract() : context(SSL_CTX_new(TLS_client_method())) { scripted::curl().names[context.get()] = "the context"; }

    Lines setCert(const std::string& cert)
    {
        scripted::curl().names[&cert] = "the text";
        return journalOf([&] {
            scripted::Handle handle(1);
            sftpSetCertTmp(&handle, cert);
        });
    }

    Lines hook(const std::string& cert, CURLcode expected)
    {
        recorded::openSsl().buffers = 0;
        return journalOf([&] {
            EXPECT_EQ(expected,
                      sftp_sslCtx_function(nullptr, context.get(), const_cast<void*>(static_cast<const void*>(&cert))));
        });
    }

    Lines convert(const std::string& text, SecuritySS_RC expected)
    {
        recorded::openSsl().buffers = 0;
        X509* cert = nullptr;
        Lines lines = journalOf([&] { EXPECT_EQ(expected, sftpConvToX509(text, cert)); });
        converted.reset(cert);
        return lines;
    }

    static std::string size(const std::string& text) { return " of " + std::to_string(text.size()) + " bytes"; }

    static std::string record(int level, const std::string& function, const std::string& text)
    {
        return "log " + std::to_string(level) + " SFtpClient 77 " + function + "(): 0|" + text + "|";
    }

    static Lines begin(const std::string& number = "1")
    {
        return {number + " FTPSSLAUTH = 0", number + " USE_SSL = 3", number + " SSLCERTTYPE = PEM"};
    }

    static Lines withCertificate()
    {
        return {"log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL with cert|", "1 SSL_VERIFYPEER = 1",
                "1 SSL_CTX_DATA = the text", "1 SSL_CTX_FUNCTION = sftp_sslCtx_function", "1 SSL_VERIFYHOST = 0"};
    }

    int certificatesInStore() const
    {
        return sk_X509_OBJECT_num(X509_STORE_get0_objects(SSL_CTX_get_cert_store(context.get())));
    }

    const Certificate first = makeCertificate(1);
    const Certificate second = makeCertificate(2);
    const Context context;
    Certificate converted;
};

TEST_F(TlsContract, ACertificateIsHandedToTheHook)
{
    EXPECT_EQ(begin() + withCertificate(), setCert(pemOf(first.get())));
}

TEST_F(TlsContract, NoneWithTheSwitchOffVerifiesNothing)
{
    recording::host().certAuthSwitch = 0;
    EXPECT_EQ(begin() + Lines({"config General/CertAuthSwitch default true",
                               "log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL without cert:|none|",
                               "1 SSL_VERIFYPEER = 0", "1 SSL_VERIFYHOST = 0"}),
              setCert("none"));
}

TEST_F(TlsContract, NoneWithTheSwitchOnIsTakenForACertificate)
{
    for (const int value : {1, -1, 2, 256, 65536}) {
        recording::host().certAuthSwitch = value;
        EXPECT_EQ(begin() + Lines({"config General/CertAuthSwitch default true"}) + withCertificate(), setCert("none"));
    }
}

TEST_F(TlsContract, OnlyTheExactTextIsTheMarker)
{
    recording::host().certAuthSwitch = 0;
    for (const std::string& text : {std::string(), std::string("None"), std::string(" none"), std::string("none "),
                                    std::string("none\0", 5), std::string("NONE"), std::string("non")}) {
        EXPECT_EQ(begin() + withCertificate(), setCert(text)) << text;
    }
}

TEST_F(TlsContract, PemIsConverted)
{
    const std::string text = pemOf(first.get());
    EXPECT_EQ(Lines({"BIO_new_mem_buf 1" + size(text), "BIO_new_mem_buf 2" + size(text), "PEM_read_bio_X509 buffer 1",
                     "BIO_free buffer 2", "BIO_free buffer 1"}),
              convert(text, SECURITYSS_SUCCESS));
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
}

TEST_F(TlsContract, DerIsConvertedFromABufferOfItsOwn)
{
    const std::string text = derOf(first.get());
    ASSERT_NE(std::string::npos, text.find('\0'));
    EXPECT_EQ(Lines({"BIO_new_mem_buf 1" + size(text), "BIO_new_mem_buf 2" + size(text), "PEM_read_bio_X509 buffer 1",
                     "d2i_X509_bio buffer 2", "BIO_free buffer 2", "BIO_free buffer 1"}),
              convert(text, SECURITYSS_SUCCESS));
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
}

TEST_F(TlsContract, OnlyTheFirstOfTwoIsConverted)
{
    convert(pemOf(first.get()) + pemOf(second.get()), SECURITYSS_SUCCESS);
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
}

TEST_F(TlsContract, TextBeforeTheCertificateIsPassedOver)
{
    const std::string text = std::string(70000, '#') + "\n" + pemOf(first.get());
    EXPECT_EQ("BIO_new_mem_buf 2" + size(text), convert(text, SECURITYSS_SUCCESS)[1]);
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
}

TEST_F(TlsContract, OpensslsErrorsAreLeftWhereTheyAre)
{
    const unsigned long hosts = recorded::leaveHostsError();
    hook(pemOf(first.get()), CURLE_OK);
    EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
    recorded::leaveHostsError();
    hook(derOf(first.get()), CURLE_OK);
    EXPECT_EQ(Errors({hosts, kNoPem}), recorded::takeErrors()) << "the attempt to read DER as PEM leaves its own";
}

// Hosts clear the queue after a failed call, and some read it first.
TEST_F(TlsContract, OpensslsErrorsAreLeftByAHookThatFails)
{
    const std::string pem = pemOf(first.get());
    const unsigned long hosts = recorded::leaveHostsError();
    hook("", CURLE_SSL_CACERT_BADFILE);
    EXPECT_EQ(Errors({hosts, kNoPem}), recorded::takeErrors());
    for (const char* text : {"none", "no certificate"}) {
        recorded::leaveHostsError();
        hook(text, CURLE_SSL_CACERT_BADFILE);
        const Errors left = recorded::takeErrors();
        ASSERT_LE(3U, left.size());
        EXPECT_EQ(Errors({hosts, kNoPem}), Errors(left.begin(), left.begin() + 2));
        EXPECT_EQ(ERR_LIB_ASN1, ERR_GET_LIB(left.back()));
    }
    for (const char* fails : {"BIO_new_mem_buf 1", "BIO_new_mem_buf 2"}) {
        recorded::leaveHostsError();
        recorded::openSsl().fails = fails;
        hook(pem, CURLE_SSL_CACERT_BADFILE);
        EXPECT_EQ(Errors{hosts}, recorded::takeErrors()) << fails;
    }
    for (const char* fails : {"SSL_CTX_get_cert_store", "X509_STORE_add_cert"}) {
        recorded::leaveHostsError();
        recorded::openSsl().fails = fails;
        hook(pem, CURLE_FAILED_INIT);
        EXPECT_EQ(Errors{hosts}, recorded::takeErrors()) << fails;
    }
}

TEST_F(TlsContract, AnythingElseIsRefused)
{
    for (const std::string& text : {std::string(), std::string("none"), std::string("no certificate\n")}) {
        EXPECT_EQ(Lines({"BIO_new_mem_buf 1" + size(text), "BIO_new_mem_buf 2" + size(text),
                         "PEM_read_bio_X509 buffer 1", "d2i_X509_bio buffer 2",
                         record(1, "sftpConvToX509", "pCert is nullptr"), "BIO_free buffer 2", "BIO_free buffer 1"}),
                  convert(text, SECURITYSS_FAILURE));
        EXPECT_EQ(nullptr, converted);
    }
}

TEST_F(TlsContract, AFailedReadOfPemFallsBackToDer)
{
    recorded::openSsl().fails = "PEM_read_bio_X509";
    convert(derOf(first.get()), SECURITYSS_SUCCESS);
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
    recorded::openSsl().fails = "d2i_X509_bio";
    const Lines lines = convert(derOf(first.get()), SECURITYSS_FAILURE);
    EXPECT_EQ(record(1, "sftpConvToX509", "pCert is nullptr"), *(lines.end() - 3));
    EXPECT_EQ(nullptr, converted);
}

TEST_F(TlsContract, WithoutTheFirstBufferNothingIsTouched)
{
    recorded::openSsl().fails = "BIO_new_mem_buf 1";
    X509* untouched = first.get();
    EXPECT_EQ(Lines({"BIO_new_mem_buf 1 of 4 bytes fails", record(1, "sftpConvToX509", "pBioPem is nullptr")}),
              journalOf([&] { EXPECT_EQ(SECURITYSS_FAILURE, sftpConvToX509("text", untouched)); }));
    EXPECT_EQ(first.get(), untouched);
}

TEST_F(TlsContract, WithoutTheSecondBufferTheFirstIsFreed)
{
    recorded::openSsl().fails = "BIO_new_mem_buf 2";
    X509* untouched = first.get();
    EXPECT_EQ(Lines({"BIO_new_mem_buf 1 of 4 bytes", "BIO_new_mem_buf 2 of 4 bytes fails",
                     record(1, "sftpConvToX509", "pBioDer is nullptr"), "BIO_free buffer 1"}),
              journalOf([&] { EXPECT_EQ(SECURITYSS_FAILURE, sftpConvToX509("text", untouched)); }));
    EXPECT_EQ(first.get(), untouched);
}

TEST_F(TlsContract, TheHookAddsTheCertificateAndReleasesItsOwn)
{
    const std::string text = pemOf(first.get());
    EXPECT_EQ(Lines({"BIO_new_mem_buf 1" + size(text), "BIO_new_mem_buf 2" + size(text), "PEM_read_bio_X509 buffer 1",
                     "BIO_free buffer 2", "BIO_free buffer 1", "SSL_CTX_get_cert_store the context",
                     "X509_STORE_add_cert PEM certificate", "X509_free PEM certificate"}),
              hook(text, CURLE_OK));
    EXPECT_EQ(1, certificatesInStore());
}

TEST_F(TlsContract, TheHookWorksOnACopyOfTheText)
{
    const std::string text = pemOf(first.get());
    hook(text, CURLE_OK);
    EXPECT_NE(static_cast<const void*>(text.data()), recorded::openSsl().bytes);
}

TEST_F(TlsContract, TheSameCertificateTwiceIsOne)
{
    const std::string text = derOf(first.get());
    hook(text, CURLE_OK);
    hook(text, CURLE_OK);
    EXPECT_EQ(1, certificatesInStore());
    hook(pemOf(second.get()), CURLE_OK);
    EXPECT_EQ(2, certificatesInStore());
}

TEST_F(TlsContract, ATextThatIsNoCertificateStopsTheHandshake)
{
    for (const char* text : {"", "none", "no certificate"}) {
        const Lines lines = hook(text, CURLE_SSL_CACERT_BADFILE);
        EXPECT_EQ(Lines({record(1, "sftpConvToX509", "pCert is nullptr"), "BIO_free buffer 2", "BIO_free buffer 1",
                         record(4, "sftp_sslCtx_function", "sslCtx_function, convToX509 failed.")}),
                  Lines(lines.end() - 4, lines.end()));
        EXPECT_EQ(0, certificatesInStore());
    }
}

TEST_F(TlsContract, WithoutAStoreTheCertificateIsReleased)
{
    recorded::openSsl().fails = "SSL_CTX_get_cert_store";
    const Lines lines = hook(pemOf(first.get()), CURLE_FAILED_INIT);
    EXPECT_EQ(
        Lines({"SSL_CTX_get_cert_store the context fails",
               record(4, "sftp_sslCtx_function", "sslCtx_function, X509_STORE is NUL."), "X509_free PEM certificate"}),
        Lines(lines.end() - 3, lines.end()));
}

TEST_F(TlsContract, ARefusedCertificateIsReleased)
{
    recorded::openSsl().fails = "X509_STORE_add_cert";
    const Lines lines = hook(pemOf(first.get()), CURLE_FAILED_INIT);
    EXPECT_EQ(
        Lines({"X509_STORE_add_cert PEM certificate fails",
               record(4, "sftp_sslCtx_function", "sslCtx_function, add cert failed."), "X509_free PEM certificate"}),
        Lines(lines.end() - 3, lines.end()));
    EXPECT_EQ(0, certificatesInStore());
}

TEST_F(TlsContract, NoExceptionLeavesTheHook)
{
    const std::string text = pemOf(first.get());
    const unsigned long hosts = recorded::leaveHostsError();
    const Lines lines = journalOf([&] {
        memory::failAllocation(1);
        EXPECT_EQ(CURLE_FAILED_INIT,
                  sftp_sslCtx_function(nullptr, context.get(), const_cast<void*>(static_cast<const void*>(&text))));
    });
    EXPECT_EQ(Lines{}, lines);
    EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
}

TEST_F(TlsContract, SetCertKeepsTheTextForTheSecurityService)
{
    for (const SecuritySS_RC answer : {SECURITYSS_SUCCESS, SECURITYSS_FAILURE}) {
        recording::host().enriched = answer;
        CurlSFtpResponse transfer;
        EXPECT_EQ(Lines({"enrichSSL a certificate"}),
                  journalOf([&] { EXPECT_EQ(answer, transfer.SetCert("a certificate")); }));
        EXPECT_EQ("a certificate", transfer.cert);
        EXPECT_EQ(Lines({"enrichSSL none"}), journalOf([&] { EXPECT_EQ(answer, transfer.SetCert("")); }));
        EXPECT_EQ("none", transfer.cert);
    }
}

} // namespace
