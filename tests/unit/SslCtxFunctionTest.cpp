#include "tls/TlsTrust.h"

#include "harness/Certificates.h"
#include "harness/Memory.h"
#include "harness/OpenSslMemory.h"
#include "harness/RecordingHost.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <vector>

using namespace certificates;
using recording::takeRecords;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kNoCertificate = "1 SFtpClient 77 sftpConvToX509(): 0|pCert is nullptr|";
constexpr const char* kNotConverted = "4 SFtpClient 77 sftp_sslCtx_function(): 0|sslCtx_function, convToX509 failed.|";
constexpr const char* kNoStore = "4 SFtpClient 77 sftp_sslCtx_function(): 0|sslCtx_function, X509_STORE is NUL.|";
constexpr const char* kNotAdded = "4 SFtpClient 77 sftp_sslCtx_function(): 0|sslCtx_function, add cert failed.|";

Context makeContext() { return Context(SSL_CTX_new(TLS_client_method())); }

int hook(SSL_CTX* context, std::string text) { return sftp_sslCtx_function(nullptr, context, &text); }

class SslCtxFunction : public testing::Test
{
protected:
    SslCtxFunction() { recording::reset(); }

    const Certificate first = make(1);
    const Certificate second = make(2);
    const Context context = makeContext();
};

TEST_F(SslCtxFunction, MakesTheCertificateATrustAnchor)
{
    EXPECT_EQ(0, hook(context.get(), pemOf(first.get())));
    EXPECT_EQ("1 ", serialsIn(context.get()));
    EXPECT_EQ(0, hook(context.get(), derOf(second.get())));
    EXPECT_EQ("1 2 ", serialsIn(context.get()));
    EXPECT_EQ(Lines{}, takeRecords());
}

TEST_F(SslCtxFunction, AddsTheFirstOfSeveralCertificates)
{
    EXPECT_EQ(0, hook(context.get(), pemOf(second.get()) + pemOf(first.get())));
    EXPECT_EQ("2 ", serialsIn(context.get()));
}

TEST_F(SslCtxFunction, AddsOneCertificateOnce)
{
    EXPECT_EQ(0, hook(context.get(), pemOf(first.get())));
    EXPECT_EQ(0, hook(context.get(), pemOf(first.get())));
    EXPECT_EQ("1 ", serialsIn(context.get()));
    EXPECT_EQ(Lines{}, takeRecords());
}

TEST_F(SslCtxFunction, LeavesTheTextAsItIs)
{
    std::string text = pemOf(first.get());
    EXPECT_EQ(0, sftp_sslCtx_function(nullptr, context.get(), &text));
    EXPECT_EQ(pemOf(first.get()), text);
}

TEST_F(SslCtxFunction, LeavesTheCertificateToTheContextAlone)
{
    ASSERT_TRUE(opensslmemory::installed());
    const std::string text = pemOf(first.get());
    // The first round fills what OpenSSL keeps for good.
    long before = 0;
    for (int round = 0; round < 3; ++round) {
        before = opensslmemory::livingBlocks();
        const Context own = makeContext();
        EXPECT_EQ(0, hook(own.get(), text));
        EXPECT_EQ(0, hook(own.get(), text));
        EXPECT_EQ(0, X509_cmp(first.get(), X509_OBJECT_get0_X509(sk_X509_OBJECT_value(
                                               X509_STORE_get0_objects(SSL_CTX_get_cert_store(own.get())), 0))));
    }
    EXPECT_EQ(before, opensslmemory::livingBlocks());
}

TEST_F(SslCtxFunction, RefusesATextWithoutACertificate)
{
    for (const char* text : {"none", "", "rubbish"}) {
        EXPECT_EQ(77, hook(context.get(), text));
        EXPECT_EQ((Lines{kNoCertificate, kNotConverted}), takeRecords());
    }
    EXPECT_EQ("", serialsIn(context.get()));
}

TEST_F(SslCtxFunction, RefusesAContextWithoutAStore)
{
    const std::string text = pemOf(first.get());
    SSL_CTX_set_cert_store(context.get(), nullptr);
    const long before = opensslmemory::livingBlocks();
    EXPECT_EQ(2, hook(context.get(), text));
    EXPECT_EQ(Lines{kNoStore}, takeRecords());
    EXPECT_EQ(before, opensslmemory::livingBlocks());
}

TEST_F(SslCtxFunction, FailsWithARecordWhereOpenSslHasNoMemory)
{
    ASSERT_TRUE(opensslmemory::installed());
    const std::string text = pemOf(first.get());
    std::set<std::string> failures;
    bool pending = false;
    for (unsigned nth = 1; !pending; ++nth) {
        const Context own = makeContext();
        const long before = opensslmemory::livingBlocks();
        opensslmemory::failAllocation(nth);
        const int result = hook(own.get(), text);
        pending = opensslmemory::failurePending();
        opensslmemory::failAllocation(0);
        const Lines records = takeRecords();
        // OpenSSL can do without some of its allocations.
        if (result == 0) {
            EXPECT_EQ(Lines{}, records);
            EXPECT_EQ("1 ", serialsIn(own.get()));
            continue;
        }
        ASSERT_FALSE(records.empty());
        EXPECT_EQ(result == 77 ? kNotConverted : kNotAdded, records.back());
        EXPECT_EQ("", serialsIn(own.get()));
        // A failed conversion's own losses are OpenSSL's.
        if (result == 2) {
            EXPECT_EQ(Lines{kNotAdded}, records);
            EXPECT_EQ(before, opensslmemory::livingBlocks());
        }
        failures.insert(records.back());
    }
    EXPECT_EQ((std::set<std::string>{kNotConverted, kNotAdded}), failures);
}

TEST_F(SslCtxFunction, LetsNoExceptionThroughWhereMemoryRunsOut)
{
    std::string text = pemOf(first.get());
    std::string rubbish = "a text that is too long for a string without a block of its own";
    const memory::Watch watch;
    memory::failAllocation(1);
    EXPECT_EQ(2, sftp_sslCtx_function(nullptr, context.get(), &text));
    memory::failAllocation(2, true);
    EXPECT_EQ(2, sftp_sslCtx_function(nullptr, context.get(), &rubbish));
}

TEST_F(SslCtxFunction, GivesTwoForWhatTheHostsLogThrows)
{
    recording::host().onStep = [](const std::string& step) {
        if (step == "begin") {
            throw std::runtime_error("no log");
        }
    };
    EXPECT_EQ(CURLE_FAILED_INIT, hook(context.get(), "no certificate"));
    EXPECT_EQ(Lines{}, takeRecords());
    recording::reset();
}

} // namespace
