#include "contract/Contract.h"

#include "support/Certificates.h"
#include "tls/TlsTrust.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <stdexcept>
#include <vector>

using namespace certificates;

namespace {

using Errors = std::vector<unsigned long>;

const unsigned long kNoPem = ERR_PACK(ERR_LIB_PEM, 0, PEM_R_NO_START_LINE);

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
        std::string text = cert;
        const Lines lines = journalOf([&] {
            const int answer = sftp_sslCtx_function(nullptr, context.get(), &text);
            const memory::Pause pause;
            EXPECT_EQ(nameOf(expected), nameOf(answer));
        });
        EXPECT_EQ(cert, text);
        EXPECT_NE(static_cast<const void*>(text.data()), recorded::openSsl().bytes) << "the hook works on a copy";
        return lines;
    }

    Lines convert(const std::string& text, SecuritySS_RC expected)
    {
        X509* cert = second.get();
        Lines lines = journalOf([&] { EXPECT_EQ(expected, sftpConvToX509(text, cert)); });
        EXPECT_NE(second.get(), cert);
        converted.reset(cert == second.get() ? nullptr : cert);
        return lines;
    }

    static std::string size(const std::string& text) { return " of " + std::to_string(text.size()) + " bytes"; }

    static std::string record(int level, const std::string& function, const std::string& text)
    {
        return recordLine(level, function, text);
    }

    // The steps of a conversion, from its buffers to the attempt to read PEM; its end is the same for all.
    static Lines tried(const std::string& text)
    {
        return {"BIO_new_mem_buf 1" + size(text), "BIO_new_mem_buf 2" + size(text), "PEM_read_bio_X509 buffer 1"};
    }
    static Lines released() { return {"BIO_free buffer 2", "BIO_free buffer 1"}; }

    void expectConverted(const std::string& text, const Lines& journal, const X509* cert)
    {
        EXPECT_TRUE(sameLines(journal, convert(text, SECURITYSS_SUCCESS)));
        EXPECT_EQ(0, X509_cmp(cert, converted.get()));
    }

    // Without the nth buffer, which takes no memory, the text stays unread and the certificate untouched.
    void expectNoBuffer(const std::string& call, const Lines& journal)
    {
        recorded::openSsl().fails = call;
        X509* untouched = first.get();
        EXPECT_TRUE(
            sameLines(journal, journalOf([&] { EXPECT_EQ(SECURITYSS_FAILURE, sftpConvToX509("text", untouched)); })));
        EXPECT_EQ(first.get(), untouched);
    }

    static Lines begin() { return {"1 FTPSSLAUTH = 0", "1 USE_SSL = 3", "1 SSLCERTTYPE = PEM"}; }

    static Lines withCertificate()
    {
        return {"log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL with cert|", "1 SSL_VERIFYPEER = 1",
                "1 SSL_CTX_DATA = the text", "1 SSL_CTX_FUNCTION = sftp_sslCtx_function", "1 SSL_VERIFYHOST = 0"};
    }

    const Certificate first = make(1);
    const Certificate second = make(2);
    const Context context{SSL_CTX_new(TLS_client_method())};
    Certificate converted;
};

TEST_F(TlsContract, ACertificateIsPassedToTheHook)
{
    EXPECT_TRUE(sameLines(begin() + withCertificate(), setCert(pemOf(first.get()))));
}

TEST_F(TlsContract, NoneWithTheSwitchOffVerifiesNothing)
{
    recording::host().certAuthSwitch = 0;
    EXPECT_TRUE(sameLines(begin() + Lines{"config General/CertAuthSwitch default true",
                                          "log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL without cert:|none|",
                                          "1 SSL_VERIFYPEER = 0", "1 SSL_VERIFYHOST = 0"},
                          setCert("none")));
}

TEST_F(TlsContract, NoneWithTheSwitchOnIsTreatedAsACertificate)
{
    for (const int value : {1, -1, 2, 256, 65536}) {
        SCOPED_TRACE(value);
        recording::host().certAuthSwitch = value;
        EXPECT_TRUE(sameLines(begin() + Lines{"config General/CertAuthSwitch default true"} + withCertificate(),
                              setCert("none")));
    }
}

TEST_F(TlsContract, OnlyTheExactTextIsTheMarker)
{
    recording::host().certAuthSwitch = 0;
    for (const std::string& text : {std::string(), std::string("None"), std::string(" none"), std::string("none "),
                                    std::string("none\0", 5), std::string("NONE"), std::string("non")}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(sameLines(begin() + withCertificate(), setCert(text)));
    }
}

TEST_F(TlsContract, PemIsConverted)
{
    const std::string text = pemOf(first.get());
    expectConverted(text, tried(text) + released(), first.get());
}

TEST_F(TlsContract, DerIsConvertedFromASeparateBuffer)
{
    const std::string text = derOf(first.get());
    ASSERT_NE(std::string::npos, text.find('\0'));
    expectConverted(text, tried(text) + Lines{"d2i_X509_bio buffer 2"} + released(), first.get());
}

TEST_F(TlsContract, TextBeforeTheCertificateIsSkipped)
{
    const std::string text = std::string(70000, '#') + "\n" + pemOf(first.get());
    expectConverted(text, tried(text) + released(), first.get());
}

TEST_F(TlsContract, OnlyTheFirstCertificateIsConverted)
{
    const std::string pem = pemOf(first.get());
    const std::string der = derOf(first.get());
    for (const std::string& text : {pem + pemOf(second.get()), pem + "rubbish", der + derOf(second.get())}) {
        SCOPED_TRACE(text);
        convert(text, SECURITYSS_SUCCESS);
        EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
    }
}

TEST_F(TlsContract, OpensslErrorsStayInTheQueue)
{
    const unsigned long hosts = recorded::leaveHostsError();
    hook(pemOf(first.get()), CURLE_OK);
    EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
    recorded::leaveHostsError();
    hook(derOf(first.get()), CURLE_OK);
    EXPECT_EQ(Errors({hosts, kNoPem}), recorded::takeErrors()) << "the attempt to read DER as PEM leaves its own";
}

// Hosts clear the queue after a failed call, and some read it first.
TEST_F(TlsContract, OpensslErrorsOfAFailingHookStayInTheQueue)
{
    const std::string pem = pemOf(first.get());
    const unsigned long hosts = recorded::leaveHostsError();
    hook("", CURLE_SSL_CACERT_BADFILE);
    const Errors ofNothing = recorded::takeErrors();
    // OpenSSL 3.5 adds that no text is no DER either.
    ASSERT_EQ(OpenSSL_version_num() >= 0x30500000UL ? 3U : 2U, ofNothing.size());
    EXPECT_EQ(Errors({hosts, kNoPem}), Errors(ofNothing.begin(), ofNothing.begin() + 2));
    for (const char* text : {"none", "no certificate"}) {
        SCOPED_TRACE(text);
        recorded::leaveHostsError();
        hook(text, CURLE_SSL_CACERT_BADFILE);
        const Errors left = recorded::takeErrors();
        ASSERT_LE(3U, left.size());
        EXPECT_EQ(Errors({hosts, kNoPem}), Errors(left.begin(), left.begin() + 2));
        EXPECT_EQ(ERR_LIB_ASN1, ERR_GET_LIB(left.back()));
    }
    for (const char* fails : {"BIO_new_mem_buf 1", "BIO_new_mem_buf 2"}) {
        SCOPED_TRACE(fails);
        recorded::leaveHostsError();
        recorded::openSsl().fails = fails;
        hook(pem, CURLE_SSL_CACERT_BADFILE);
        EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
    }
    for (const char* fails : {"SSL_CTX_get_cert_store", "X509_STORE_add_cert"}) {
        SCOPED_TRACE(fails);
        recorded::leaveHostsError();
        recorded::openSsl().fails = fails;
        hook(pem, CURLE_FAILED_INIT);
        EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
    }
}

TEST_F(TlsContract, AnythingElseIsRefused)
{
    const std::string pem = pemOf(first.get());
    const std::string der = derOf(first.get());
    const std::string begin = "-----BEGIN CERTIFICATE-----\n";
    const std::string end = "-----END CERTIFICATE-----\n";
    for (const std::string& text :
         {std::string(), std::string("none"), std::string("no certificate\n"), begin, begin + "!!!!\n" + end,
          begin + "AAAA\n" + end, pem.substr(0, pem.size() - 20), der.substr(0, der.size() - 1)}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(sameLines(
            tried(text) + Lines{"d2i_X509_bio buffer 2", record(1, "sftpConvToX509", "pCert is nullptr")} + released(),
            convert(text, SECURITYSS_FAILURE)));
        EXPECT_EQ(nullptr, converted);
    }
}

TEST_F(TlsContract, AFailedReadOfPemFallsBackToDer)
{
    const std::string text = derOf(first.get());
    recorded::openSsl().fails = "PEM_read_bio_X509";
    convert(text, SECURITYSS_SUCCESS);
    EXPECT_EQ(0, X509_cmp(first.get(), converted.get()));
    recorded::openSsl().fails = "d2i_X509_bio";
    EXPECT_TRUE(sameLines(tried(text) +
                              Lines{"d2i_X509_bio buffer 2 fails", record(1, "sftpConvToX509", "pCert is nullptr")} +
                              released(),
                          convert(text, SECURITYSS_FAILURE)));
    EXPECT_EQ(nullptr, converted);
}

TEST_F(TlsContract, WithoutTheFirstBufferNothingIsTouched)
{
    expectNoBuffer("BIO_new_mem_buf 1",
                   {"BIO_new_mem_buf 1 of 4 bytes fails", record(1, "sftpConvToX509", "pBioPem is nullptr")});
}

TEST_F(TlsContract, WithoutTheSecondBufferTheFirstIsFreed)
{
    expectNoBuffer("BIO_new_mem_buf 2", {"BIO_new_mem_buf 1 of 4 bytes", "BIO_new_mem_buf 2 of 4 bytes fails",
                                         record(1, "sftpConvToX509", "pBioDer is nullptr"), "BIO_free buffer 1"});
}

TEST_F(TlsContract, TheHookAddsTheCertificateAndReleasesItsOwn)
{
    const std::string text = pemOf(first.get());
    EXPECT_TRUE(sameLines(tried(text) + released() +
                              Lines{"SSL_CTX_get_cert_store the context", "X509_STORE_add_cert PEM certificate",
                                    "X509_free PEM certificate"},
                          hook(text, CURLE_OK)));
    EXPECT_EQ("1 ", serialsIn(context.get()));
}

TEST_F(TlsContract, TheHookAddsTheFirstOfSeveralCertificatesAndEachOnce)
{
    hook(derOf(first.get()), CURLE_OK);
    hook(derOf(first.get()), CURLE_OK);
    EXPECT_EQ("1 ", serialsIn(context.get()));
    hook(pemOf(second.get()) + pemOf(make(3).get()), CURLE_OK);
    EXPECT_EQ("1 2 ", serialsIn(context.get()));
}

TEST_F(TlsContract, InvalidCertificateTextStopsTheHandshake)
{
    for (const char* text : {"", "none", "no certificate"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(sameLines(Lines{record(1, "sftpConvToX509", "pCert is nullptr")} + released() +
                                  Lines{record(4, "sftp_sslCtx_function", "sslCtx_function, convToX509 failed.")},
                              lastOf(hook(text, CURLE_SSL_CACERT_BADFILE), 4)));
    }
    EXPECT_EQ("", serialsIn(context.get()));
}

TEST_F(TlsContract, AContextWithoutAStoreStopsTheHandshake)
{
    recorded::openSsl().fails = "SSL_CTX_get_cert_store";
    EXPECT_TRUE(sameLines({"SSL_CTX_get_cert_store the context fails",
                           record(4, "sftp_sslCtx_function", "sslCtx_function, X509_STORE is NUL."),
                           "X509_free PEM certificate"},
                          lastOf(hook(pemOf(first.get()), CURLE_FAILED_INIT), 3)));
}

TEST_F(TlsContract, ARefusedCertificateIsReleased)
{
    recorded::openSsl().fails = "X509_STORE_add_cert";
    EXPECT_TRUE(
        sameLines({"X509_STORE_add_cert PEM certificate fails",
                   record(4, "sftp_sslCtx_function", "sslCtx_function, add cert failed."), "X509_free PEM certificate"},
                  lastOf(hook(pemOf(first.get()), CURLE_FAILED_INIT), 3)));
    EXPECT_EQ("", serialsIn(context.get()));
}

TEST_F(TlsContract, NoExceptionLeavesTheHook)
{
    std::string text = pemOf(first.get());
    const unsigned long hosts = recorded::leaveHostsError();
    expectNothingNoted([&] {
        memory::failAllocation(1);
        EXPECT_EQ(CURLE_FAILED_INIT, sftp_sslCtx_function(nullptr, context.get(), &text));
    });
    EXPECT_EQ(Errors{hosts}, recorded::takeErrors());
}

TEST_F(TlsContract, TheHookReturnsTwoIfTheHostsLogThrows)
{
    recording::host().onStep = [](const std::string& step) {
        if (step == "begin") {
            throw std::runtime_error("no log");
        }
    };
    hook("no certificate", CURLE_FAILED_INIT);
    EXPECT_TRUE(sameLines({}, recording::takeRecords()));
}

} // namespace
