// What a well-behaved client can do, in each TLS mode.
#include "ServerTest.h"

namespace {

using testserver::Certificate;
using testserver::TlsMode;

class Transfer : public ServerTest, public testing::WithParamInterface<TlsMode>
{
protected:
    Transfer() { config.tls = GetParam(); }
};

std::string idOf(const testing::TestParamInfo<TlsMode>& mode)
{
    return mode.param == TlsMode::Plain ? "Plain" : mode.param == TlsMode::Explicit ? "Explicit" : "Implicit";
}

INSTANTIATE_TEST_SUITE_P(Mode, Transfer, testing::Values(TlsMode::Plain, TlsMode::Explicit, TlsMode::Implicit), idOf);

TEST_P(Transfer, UploadAndDownload)
{
    serve();
    const std::string content = randomBytes(3000001);
    EXPECT_EQ(CURLE_OK, client().upload("new/folders/a", content));
    EXPECT_TRUE(sameBytes(content, contentOf(served("new/folders/a"))));
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("new/folders/a"));
    EXPECT_TRUE(sameBytes(content, downloads.body));
}

TEST_P(Transfer, SeveralOnOneControlConnection)
{
    serve();
    {
        CurlClient one = client();
        EXPECT_EQ(CURLE_OK, one.download(""));
        EXPECT_EQ(CURLE_OK, one.download(""));
        EXPECT_EQ(CURLE_OK, one.upload("a", "the content"));
    }
    EXPECT_EQ("the content", contentOf(served("a")));
    EXPECT_EQ(1U, sessions().size());
}

class TlsTransfer : public ServerTest
{
protected:
    TlsTransfer() { writeFile(served("a"), "the content"); }
};

// Session tickets that the client never reads turn its close into a reset, which discards data in transit. These
// sizes just fit the socket's buffers, where it happens most.
TEST_F(TlsTransfer, NoUploadIsTruncated)
{
    config.tls = TlsMode::Implicit;
    serve();
    for (const std::size_t size : {200000U, 1000000U, 200001U, 1000001U, 200002U, 1000002U}) {
        const std::string content = randomBytes(size);
        EXPECT_EQ(CURLE_OK, client().upload("up", content)) << size;
        EXPECT_TRUE(sameBytes(content, contentOf(served("up")))) << size;
    }
}

TEST_F(TlsTransfer, TicketsOnDataConnectionsCanBeEnabled)
{
    config.dataTickets = true;
    serve();
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
    EXPECT_EQ("the content", downloads.body);
}

TEST_F(TlsTransfer, AnUploadWithCloseNotifyIsAcceptedWhereRequired)
{
    config.strictUploadEnd = true;
    serve();
    EXPECT_EQ(CURLE_OK, client().upload("up", "the content"));
    EXPECT_EQ("the content", contentOf(served("up")));
}

TEST_F(TlsTransfer, TheWholeChainIsSent)
{
    config.certificate.certificatePem += authority.certificatePem();
    serve();
    CurlClient asks = client();
    curl_easy_setopt(asks.handle(), CURLOPT_CERTINFO, 1L);
    EXPECT_EQ(CURLE_OK, asks.download("a"));
    curl_certinfo* sent = nullptr;
    curl_easy_getinfo(asks.handle(), CURLINFO_CERTINFO, &sent);
    EXPECT_EQ(2, sent->num_of_certs);
}

TEST_F(TlsTransfer, TheControlConnectionsSessionIsRequired)
{
    config.tlsReuseRequired = true;
    serve();
    EXPECT_EQ(CURLE_OK, client().download("a"));
    CurlClient forgets = client();
    curl_easy_setopt(forgets.handle(), CURLOPT_SSL_SESSIONID_CACHE, 0L);
    EXPECT_NE(CURLE_OK, forgets.download("a"));
    EXPECT_TRUE(hasLine("< 522 the control connection's TLS session is required", server->transcripts().at(1)));
}

TEST_F(TlsTransfer, UnusableCertificatesAreRejectedAtOnce)
{
    config.certificate = Certificate{};
    EXPECT_THROW(serve(), std::runtime_error);
    config.certificate = {authority.issue().certificatePem, authority.issue().privateKeyPem};
    EXPECT_THROW(serve(), std::runtime_error);
}

} // namespace
