// The certificates that a session trusts.
#include <call/Failure.h>
#include <request/Certificates.h>

#include "server/Certificates.h"
#include "support/Certificates.h"

#include <gtest/gtest.h>

#include <openssl/x509v3.h>

#include <unistd.h>

#include <thread>

namespace {

using namespace session;

// What a TLS context gets of these.
std::string serialsOf(const Trust& trust)
{
    const certificates::Context context(SSL_CTX_new(TLS_client_method()));
    return trustIn(context.get(), trust) ? certificates::serialsIn(context.get()) : "no memory";
}

} // namespace

// As libcurl sets it, which some releases do only before the store takes the place of theirs.
TEST(CertificateReader, TrustsCertificatesThatAreNotTheirOwnIssuers)
{
    const certificates::Context context(SSL_CTX_new(TLS_client_method()));
    const std::string text = certificates::pemOf(certificates::make(1).get());
    ASSERT_TRUE(trustIn(context.get(), CertificateReader().trusted(text)));
    const X509_VERIFY_PARAM* const rules = X509_STORE_get0_param(SSL_CTX_get_cert_store(context.get()));
    EXPECT_NE(0U, X509_VERIFY_PARAM_get_flags(rules) & X509_V_FLAG_PARTIAL_CHAIN);
}

TEST(CertificateReader, AnswersEachTextAsItIs)
{
    const certificates::Certificate one = certificates::make(1);
    const certificates::Certificate other = certificates::make(2);
    CertificateReader reader;
    for (X509* const each : {one.get(), one.get(), other.get()}) {
        for (const std::string& text :
             {certificates::pemOf(each), certificates::derOf(each), certificates::derOf(each)}) {
            const Trust trust = reader.trusted(text);
            EXPECT_EQ(certificates::pemOf(each), trust.pem);
            EXPECT_EQ(each == other.get() ? "2 " : "1 ", serialsOf(trust));
        }
        EXPECT_EQ("", reader.trusted("").pem);
        EXPECT_EQ(nullptr, reader.trusted("").certificates);
        for (const char* const none : {"none", "no certificate"}) {
            try {
                reader.trusted(none);
                ADD_FAILURE() << none;
            } catch (const Failure& failure) {
                EXPECT_EQ(CURLE_SSL_CACERT_BADFILE, failure.code());
            }
        }
    }
}

TEST(CertificateReader, KeepsTheCertificatesOfTheLastText)
{
    const std::string text = certificates::pemOf(certificates::make(1).get());
    CertificateReader reader;
    const Trust trust = reader.trusted(text);
    EXPECT_EQ(trust.certificates, reader.trusted(text).certificates);
    EXPECT_NE(trust.certificates, reader.trusted(text + text).certificates);
}

TEST(CertificateReader, TrustsAllOfSeveralCertificates)
{
    const std::string text =
        certificates::pemOf(certificates::make(1).get()) + certificates::pemOf(certificates::make(2).get());
    EXPECT_EQ("1 2 ", serialsOf(CertificateReader().trusted(text)));
}

// The thread sanitizer does not know the lock-free way in which OpenSSL tells threads that another has worked out what
// a certificate's extensions say. In a byte through a pipe it sees no order, and after the write nothing may take a
// lock.
TEST(CertificateReader, LeavesThreadsNothingToWorkOut)
{
    const testserver::CertificateAuthority authority;
    const std::string issued = authority.issue().certificatePem;
    const Trust trust = CertificateReader().trusted(authority.certificatePem());
    const Trust servers[] = {CertificateReader().trusted(issued), CertificateReader().trusted(issued)};
    const auto check = [&trust](const Trust& server) {
        return X509_check_issued(sk_X509_value(trust.certificates.get(), 0),
                                 sk_X509_value(server.certificates.get(), 0));
    };
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    std::thread first([&] {
        EXPECT_EQ(X509_V_OK, check(servers[0]));
        EXPECT_EQ(1, write(ends[1], "x", 1));
    });
    char byte = 0;
    EXPECT_EQ(1, read(ends[0], &byte, 1));
    EXPECT_EQ(X509_V_OK, check(servers[1]));
    first.join();
    close(ends[0]);
    close(ends[1]);
}

TEST(CertificateReader, LeavesAKeyAmongTheCertificatesAside)
{
    const testserver::Certificate server = testserver::CertificateAuthority().issue();
    const std::string alone = serialsOf(CertificateReader().trusted(server.certificatePem));
    EXPECT_NE("", alone);
    EXPECT_EQ(alone, serialsOf(CertificateReader().trusted(server.certificatePem + server.privateKeyPem)));
}

TEST(CertificateReader, RefusesACertificateThatCannotBeReadBehindAnother)
{
    const std::string text = certificates::pemOf(certificates::make(1).get());
    try {
        CertificateReader().trusted(text + "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n");
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(CURLE_SSL_CACERT_BADFILE, failure.code());
        EXPECT_STREQ(
            "Problem with the SSL CA cert (path? access rights?): one of the certificates in caCert cannot be read",
            failure.what());
    }
}

TEST(CertificateReader, TakesDerThatHoldsTheWordsOfPem)
{
    const testserver::CertificateAuthority authority("-----BEGIN CERTIFICATE-----");
    EXPECT_EQ(authority.certificatePem(), CertificateReader().trusted(authority.certificateDer()).pem);
}
