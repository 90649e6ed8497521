#include "tls/TlsTrust.h"

#include "support/Certificates.h"
#include "support/Lines.h"
#include "support/RecordingHost.h"

using namespace certificates;
using recording::takeRecords;

namespace {

class CertificateText : public testing::Test
{
protected:
    CertificateText() { recording::reset(); }

    void expectRead(const std::string& text, long serial)
    {
        X509* cert = nullptr;
        EXPECT_EQ(SECURITYSS_SUCCESS, sftpConvToX509(text, cert));
        const Certificate owned(cert);
        EXPECT_TRUE(sameLines({}, takeRecords()));
        ASSERT_NE(nullptr, cert);
        EXPECT_EQ(serial, serialOf(cert));
        EXPECT_EQ(0, X509_cmp(cert, serial == 1 ? first.get() : second.get()));
    }

    void expectRefused(const std::string& text)
    {
        X509* cert = second.get();
        EXPECT_EQ(SECURITYSS_FAILURE, sftpConvToX509(text, cert));
        EXPECT_EQ(nullptr, cert);
        EXPECT_TRUE(sameLines({"1 SFtpClient 77 sftpConvToX509(): 0|pCert is nullptr|"}, takeRecords()));
    }

    const Certificate first = make(1);
    const Certificate second = make(2);
};

TEST_F(CertificateText, MayBePem) { expectRead(pemOf(first.get()), 1); }

TEST_F(CertificateText, MayBePemBehindOtherText) { expectRead("the authority:\n" + pemOf(second.get()), 2); }

TEST_F(CertificateText, MayBeDerWithZeroBytes)
{
    const std::string der = derOf(second.get());
    ASSERT_NE(std::string::npos, der.find('\0'));
    expectRead(der, 2);
}

TEST_F(CertificateText, IsReadUpToTheEndOfItsFirstCertificate)
{
    expectRead(pemOf(first.get()) + pemOf(second.get()), 1);
    expectRead(derOf(second.get()) + derOf(first.get()), 2);
    expectRead(pemOf(second.get()) + "rubbish", 2);
}

TEST_F(CertificateText, IsRefusedWithoutACertificate)
{
    expectRefused("");
    expectRefused("none");
    expectRefused("rubbish");
    expectRefused("-----BEGIN CERTIFICATE-----\n");
    expectRefused("-----BEGIN CERTIFICATE-----\n!!!!\n-----END CERTIFICATE-----\n");
    expectRefused("-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n");
}

TEST_F(CertificateText, IsRefusedWhenCutShort)
{
    const std::string der = derOf(first.get());
    expectRefused(der.substr(0, der.size() - 1));
    const std::string pem = pemOf(first.get());
    expectRefused(pem.substr(0, pem.size() - 20));
}

} // namespace
