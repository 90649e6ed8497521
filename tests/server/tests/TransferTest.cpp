// What a client that knows its trade gets done, in each TLS mode.
#include "harness/CurlClient.h"

#include <openssl/tls1.h>

#include <algorithm>

namespace {

using testserver::Certificate;
using testserver::TlsMode;

class Transfer : public CurlTest, public testing::WithParamInterface<TlsMode>
{
protected:
    Transfer() { config.tls = GetParam(); }
};

std::string nameOf(const testing::TestParamInfo<TlsMode>& mode)
{
    return mode.param == TlsMode::Plain ? "Plain" : mode.param == TlsMode::Explicit ? "Explicit" : "Implicit";
}

INSTANTIATE_TEST_SUITE_P(Mode, Transfer, testing::Values(TlsMode::Plain, TlsMode::Explicit, TlsMode::Implicit), nameOf);

TEST_P(Transfer, UploadAndDownload)
{
    serve();
    const std::string content = manyBytes(3000001);
    EXPECT_EQ(CURLE_OK, client().upload("new/folders/a", content));
    EXPECT_TRUE(content == contentOf(served("new/folders/a")));
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("new/folders/a"));
    EXPECT_TRUE(content == downloads.body);
}

TEST_P(Transfer, EmptyFiles)
{
    serve();
    EXPECT_EQ(CURLE_OK, client().upload("a", ""));
    EXPECT_EQ("", contentOf(served("a")));
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
    EXPECT_EQ("", downloads.body);
}

TEST_P(Transfer, NamesAreSorted)
{
    for (const char* name : {"c", "a", "b b"}) {
        writeFile(served(name), "");
    }
    serve();
    CurlClient lists = client();
    EXPECT_EQ(CURLE_OK, lists.list(""));
    EXPECT_EQ("a\nb b\nc\n", lists.body) << "libcurl's line ends";
}

TEST_P(Transfer, AnEmptyListing)
{
    serve();
    CurlClient lists = client();
    EXPECT_EQ(CURLE_OK, lists.list(""));
    EXPECT_EQ("", lists.body);
}

TEST_P(Transfer, TheSizeOfFiftyGibibytes)
{
    writeFile(served("huge"), "");
    std::filesystem::resize_file(served("huge"), 53687091200);
    serve();
    CurlClient asks = client();
    EXPECT_EQ(CURLE_OK, asks.askSize("huge"));
    EXPECT_EQ(53687091200, asks.size);
    EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, client().askSize("missing"));
}

TEST_P(Transfer, RenamingAndRemoving)
{
    writeFile(served("a"), "the content");
    serve();
    EXPECT_EQ(CURLE_OK, client().say("rename a b"));
    EXPECT_EQ("the content", contentOf(served("b")));
    EXPECT_EQ(CURLE_OK, client().say("rm /b"));
    EXPECT_FALSE(std::filesystem::exists(served("b")));
    EXPECT_EQ(CURLE_QUOTE_ERROR, client().say("rm b"));
}

TEST_P(Transfer, SeveralOnOneControlConnection)
{
    serve();
    {
        CurlClient one = client();
        EXPECT_EQ(CURLE_OK, one.list(""));
        EXPECT_EQ(CURLE_OK, one.list(""));
        EXPECT_EQ(CURLE_OK, one.upload("a", "the content"));
    }
    EXPECT_EQ("the content", contentOf(served("a")));
    EXPECT_EQ(1U, server->transcripts().size());
}

TEST_P(Transfer, ResumedDownload)
{
    writeFile(served("a"), "the content");
    serve();
    CurlClient resumes = client();
    curl_easy_setopt(resumes.handle(), CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(4));
    EXPECT_EQ(CURLE_OK, resumes.download("a"));
    EXPECT_EQ("content", resumes.body);
}

TEST_P(Transfer, PasvWhereTheClientPrefersIt)
{
    writeFile(served("a"), "the content");
    serve();
    {
        CurlClient old = client();
        curl_easy_setopt(old.handle(), CURLOPT_FTP_USE_EPSV, 0L);
        EXPECT_EQ(CURLE_OK, old.download("a"));
        EXPECT_EQ("the content", old.body);
    }
    const Lines session = server->transcripts().at(0);
    EXPECT_NE(session.end(), std::find(session.begin(), session.end(), "< 227 Entering Passive Mode (127,0,0,1,PORT)"));
}

class TlsTransfer : public CurlTest
{
protected:
    TlsTransfer() { writeFile(served("a"), "the content"); }
};

TEST_F(TlsTransfer, TheWholeTranscript)
{
    serve();
    EXPECT_EQ(CURLE_OK, client().download("a"));
    EXPECT_EQ(std::vector<Lines>{Lines({"< 220 ready",    "> AUTH SSL",
                                        "< 234 TLS next", "= TLS on control",
                                        "> USER backup",  "< 331 password please",
                                        "> PASS ****",    "< 230 logged in",
                                        "> PBSZ 0",       "< 200 PBSZ=0",
                                        "> PROT P",       "< 200 protection set",
                                        "> PWD",          "< 257 \"/\"",
                                        "> EPSV",         "< 229 Entering Extended Passive Mode (|||PORT|)",
                                        "> TYPE I",       "< 200 type set",
                                        "> SIZE a",       "< 213 11",
                                        "> RETR a",       "< 150 data follows",
                                        "= TLS on data",  "= 11 bytes sent",
                                        "< 226 done",     "> QUIT",
                                        "< 221 goodbye"})},
              server->transcripts());
}

// Session tickets that the client never reads turn its close into a reset, and that loses what is under way. These
// sizes just fit the socket's buffers, where it is seen most.
TEST_F(TlsTransfer, NoUploadIsCutShort)
{
    config.tls = TlsMode::Implicit;
    serve();
    for (const std::size_t size : {200000U, 1000000U, 200001U, 1000001U, 200002U, 1000002U}) {
        const std::string content = manyBytes(size);
        EXPECT_EQ(CURLE_OK, client().upload("up", content));
        EXPECT_TRUE(content == contentOf(served("up"))) << size;
    }
}

TEST_F(TlsTransfer, TicketsOnDataConnectionsAreThereToOrder)
{
    config.dataTickets = true;
    serve();
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
    EXPECT_EQ("the content", downloads.body);
}

TEST_F(TlsTransfer, AnUploadThatIsAnnouncedToEndIsTakenWhenItMust)
{
    config.strictUploadEnd = true;
    serve();
    EXPECT_EQ(CURLE_OK, client().upload("up", "the content"));
    EXPECT_EQ("the content", contentOf(served("up")));
}

TEST_F(TlsTransfer, AClientOfAnotherAuthority)
{
    serve();
    const std::string other = testserver::CertificateAuthority("Another CA").certificatePem();
    EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, CurlClient(config, server->port(), other).download("a"));
    EXPECT_EQ(std::vector<Lines>{Lines({"< 220 ready", "> AUTH SSL", "< 234 TLS next", "= no TLS on control"})},
              server->transcripts());
}

TEST_F(TlsTransfer, TheWholeChainIsSent)
{
    config.certificate.certificatePem += authority.certificatePem();
    serve();
    CurlClient asks = client();
    curl_easy_setopt(asks.handle(), CURLOPT_CERTINFO, 1L);
    EXPECT_EQ(CURLE_OK, asks.askSize("a"));
    curl_certinfo* sent = nullptr;
    curl_easy_getinfo(asks.handle(), CURLINFO_CERTINFO, &sent);
    EXPECT_EQ(2, sent->num_of_certs);
}

TEST_F(TlsTransfer, ACertificateOfItsOwnForData)
{
    config.dataCertificate = testserver::CertificateAuthority("Another CA").issue();
    serve();
    EXPECT_EQ(CURLE_OK, client().askSize("a"));
    EXPECT_NE(CURLE_OK, client().download("a"));
    const Lines session = server->transcripts().at(1);
    EXPECT_NE(session.end(), std::find(session.begin(), session.end(), "< 425 no TLS on the data connection"));
}

TEST_F(TlsTransfer, TheControlConnectionsSessionIsRequired)
{
    config.tlsReuseRequired = true;
    serve();
    EXPECT_EQ(CURLE_OK, client().download("a"));
    CurlClient forgets = client();
    curl_easy_setopt(forgets.handle(), CURLOPT_SSL_SESSIONID_CACHE, 0L);
    EXPECT_NE(CURLE_OK, forgets.download("a"));
    const Lines session = server->transcripts().at(1);
    EXPECT_NE(session.end(),
              std::find(session.begin(), session.end(), "< 522 the control connection's TLS session is required"));
}

TEST_F(TlsTransfer, OnlyOldTls)
{
    config.maxTlsVersion = TLS1_1_VERSION;
    serve();
    EXPECT_EQ(CURLE_SSL_CONNECT_ERROR, client().download("a"));
}

TEST_F(TlsTransfer, OnlyTls12)
{
    config.maxTlsVersion = TLS1_2_VERSION;
    serve();
    CurlClient downloads = client();
    EXPECT_EQ(CURLE_OK, downloads.download("a"));
    EXPECT_EQ("the content", downloads.body);
}

TEST_F(TlsTransfer, UnusableCertificatesAreRefusedAtOnce)
{
    config.certificate = Certificate{};
    EXPECT_THROW(serve(), std::runtime_error);
    config.certificate = {authority.issue().certificatePem, authority.issue().privateKeyPem};
    EXPECT_THROW(serve(), std::runtime_error);
}

} // namespace
