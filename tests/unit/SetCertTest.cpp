#include "transfer/CurlSFtpResponse.h"

#include "support/Memory.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <new>

using recording::host;

namespace {

class SetCert : public testing::Test
{
protected:
    SetCert() { recording::reset(); }

    void expectKept(const std::string& given, const std::string& kept)
    {
        host().enrichments.clear();
        EXPECT_EQ(SECURITYSS_SUCCESS, transfer.SetCert(given));
        EXPECT_EQ(kept, transfer.cert);
        ASSERT_EQ(1U, host().enrichments.size());
        EXPECT_EQ(transfer.curlHandle, host().enrichments[0].curl);
        EXPECT_EQ(&transfer.cert, host().enrichments[0].cert);
        EXPECT_EQ(kept, host().enrichments[0].text);
        EXPECT_TRUE(sameLines({}, recording::takeRecords()));
    }

    CurlSFtpResponse transfer;
};

TEST_F(SetCert, KeepsTheTextAndPassesItToTheHost)
{
    expectKept("a certificate", "a certificate");
    expectKept(std::string("\0der", 4), std::string("\0der", 4));
}

TEST_F(SetCert, KeepsNoneForAnEmptyText)
{
    expectKept("", "none");
    expectKept("a certificate", "a certificate");
    expectKept("", "none");
}

TEST_F(SetCert, ReturnsTheHostsResult)
{
    host().enriched = SECURITYSS_FAILURE;
    EXPECT_EQ(SECURITYSS_FAILURE, transfer.SetCert("a certificate"));
    EXPECT_EQ("a certificate", transfer.cert);
    host().enriched = SECURITYSS_SUCCESS;
    EXPECT_EQ(SECURITYSS_SUCCESS, transfer.SetCert("a certificate"));
}

TEST_F(SetCert, ClearsTheFormerTextFirst)
{
    const std::string longText(100, 'x');
    transfer.cert = "former";
    const memory::Watch watch;
    memory::failAllocation(1);
    EXPECT_THROW(transfer.SetCert(longText), std::bad_alloc);
    EXPECT_EQ("none", transfer.cert);
    EXPECT_TRUE(host().enrichments.empty());
}

} // namespace
