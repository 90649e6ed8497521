#include "tls/TlsTrust.h"

#include "harness/Certificates.h"
#include "harness/OpenSslMemory.h"
#include "harness/RecordingHost.h"

#include <gtest/gtest.h>

#include <vector>

using namespace certificates;
using recording::takeRecords;

namespace {

using Lines = std::vector<std::string>;

class CertificateText : public testing::Test
{
protected:
    CertificateText() { recording::reset(); }

    void expectRead(const std::string& text, long serial)
    {
        expectNothingLeft([&] {
            X509* cert = nullptr;
            EXPECT_EQ(0, sftpConvToX509(text, cert));
            const Certificate owned(cert);
            EXPECT_EQ(Lines{}, takeRecords());
            ASSERT_NE(nullptr, cert);
            EXPECT_EQ(serial, serialOf(cert));
            EXPECT_EQ(0, X509_cmp(cert, serial == 1 ? first.get() : second.get()));
        });
    }

    void expectRefused(const std::string& text)
    {
        expectNothingLeft([&] {
            X509* cert = second.get();
            EXPECT_EQ(3, sftpConvToX509(text, cert));
            EXPECT_EQ(nullptr, cert);
            EXPECT_EQ(Lines{record("pCert is nullptr")}, takeRecords());
        });
    }

    template <typename Conversion>
    static void expectNothingLeft(const Conversion& convert)
    {
        ASSERT_TRUE(opensslmemory::installed());
        // The first time fills what OpenSSL keeps for good.
        convert();
        const long before = opensslmemory::livingBlocks();
        convert();
        EXPECT_EQ(before, opensslmemory::livingBlocks());
    }

    static std::string record(const std::string& text) { return "1 SFtpClient 77 sftpConvToX509(): 0|" + text + "|"; }

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

TEST_F(CertificateText, IsNotReadWhereMemoryRunsOut)
{
    ASSERT_TRUE(opensslmemory::installed());
    const std::string text = derOf(first.get());
    Lines seen;
    bool pending = false;
    for (unsigned nth = 1; !pending; ++nth) {
        const long before = opensslmemory::livingBlocks();
        X509* cert = second.get();
        opensslmemory::failAllocation(nth);
        const SecuritySS_RC result = sftpConvToX509(text, cert);
        pending = opensslmemory::failurePending();
        opensslmemory::failAllocation(0);
        const Lines records = takeRecords();
        // DER is read in spite of what failed in the attempt to read PEM.
        if (result == SECURITYSS_SUCCESS) {
            EXPECT_EQ(Lines{}, records);
            X509_free(cert);
            continue;
        }
        EXPECT_EQ(3, result);
        ASSERT_EQ(1U, records.size());
        const bool tried = records[0] == record("pCert is nullptr");
        EXPECT_EQ(tried ? nullptr : second.get(), cert);
        // A failed attempt's own losses are OpenSSL's.
        if (!tried) {
            EXPECT_EQ(before, opensslmemory::livingBlocks());
        }
        if (seen.empty() || seen.back() != records[0]) {
            seen.push_back(records[0]);
        }
    }
    EXPECT_EQ((Lines{record("pBioPem is nullptr"), record("pBioDer is nullptr"), record("pCert is nullptr")}), seen);
}

} // namespace
