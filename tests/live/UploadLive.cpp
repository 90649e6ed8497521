#include "harness/Live.h"

#include <cstdint>

namespace {

using testserver::TlsMode;

class UploadLive : public Live
{
protected:
    UploadLive() { writeFile(request.localPath, "the content"); }

    int upload(const std::string& path)
    {
        request.remotePath = url(path);
        return facade.UploadFileToSFtpServer(request, errorText);
    }

    static Lines store(const std::string& name, std::size_t bytes, bool tls)
    {
        return {"> EPSV",
                "< 229 Entering Extended Passive Mode (|||PORT|)",
                "> TYPE I",
                "< 200 type set",
                "> STOR " + name,
                "< 150 send the data",
                tls ? "= TLS on data" : "= no TLS on data",
                "= " + std::to_string(bytes) + " bytes received",
                "< 226 done"};
    }
};

TEST_F(UploadLive, AnFtpUrlGoesInTheClear)
{
    serve();
    EXPECT_EQ(0, upload("/a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("the content", contentOf(served("a.bak")));
    EXPECT_EQ(std::vector<Lines>{clearLogin() + store("a.bak", 11, false) + goodbye()}, sessions());
    EXPECT_EQ(Lines{}, live::takeRecords());
    EXPECT_EQ("", out->content());
    EXPECT_EQ("", err->content());
}

TEST_F(UploadLive, AnFtpsUrlGoesOverTls)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(authority.certificatePem());
    serve();
    EXPECT_EQ(0, upload("/a.bak"));
    EXPECT_EQ("the content", contentOf(served("a.bak")));
    EXPECT_EQ(std::vector<Lines>{implicitLogin() + store("a.bak", 11, true) + goodbye()}, sessions());
}

TEST_F(UploadLive, TheRequestsCertificateDoesNotCount)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(testserver::CertificateAuthority("Another CA").certificatePem());
    serve();
    EXPECT_EQ(60, upload("/a.bak"));
    EXPECT_FALSE(exists(served("a.bak")));
}

TEST_F(UploadLive, MissingDirectoriesAreMade)
{
    serve();
    EXPECT_EQ(0, upload("/weekly/monday/a.bak"));
    EXPECT_EQ("the content", contentOf(served("weekly/monday/a.bak")));
    EXPECT_EQ(std::vector<Lines>{clearLogin() +
                                 Lines({"> CWD weekly", "< 550 no such directory", "> MKD weekly",
                                        "< 257 \"/weekly\" made", "> CWD weekly", "< 250 directory changed",
                                        "> CWD monday", "< 550 no such directory", "> MKD monday",
                                        "< 257 \"/weekly/monday\" made", "> CWD monday", "< 250 directory changed"}) +
                                 store("a.bak", 11, false) + goodbye()},
              sessions());
}

TEST_F(UploadLive, AnEmptyFile)
{
    writeFile(request.localPath, "");
    serve();
    EXPECT_EQ(0, upload("/empty"));
    EXPECT_EQ("", contentOf(served("empty")));
    EXPECT_EQ(std::vector<Lines>{clearLogin() + store("empty", 0, false) + goodbye()}, sessions());
}

TEST_F(UploadLive, ManyMebibytes)
{
    std::string content;
    for (std::uint32_t i = 0; content.size() < 16 * 1024 * 1024; ++i) {
        content.append(reinterpret_cast<const char*>(&i), sizeof(i));
    }
    writeFile(request.localPath, content);
    serve();
    EXPECT_EQ(0, upload("/large"));
    EXPECT_TRUE(content == contentOf(served("large")));
}

TEST_F(UploadLive, AServerThatDemandsTlsAtLoginRefusesIt)
{
    config.tlsRequiredAtLogin = true;
    serve();
    EXPECT_EQ(67, upload("/a.bak"));
    EXPECT_EQ("Login denied", errorText);
    EXPECT_EQ(Lines({"4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                     "4 CurlSFtpResponse::UploadFileToSFtpServer(): "
                     "Perform upload file failed, m_ErrorCodeis 67, errorString isLogin denied",
                     "4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                     "4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                     "4 SFtpClient::UploadFileToSFtpServer(): "
                     "Send SFtp request occur network error. Error  is Login denied"}),
              live::takeRecords());
}

TEST_F(UploadLive, ARefusedFile)
{
    config.faults = {testserver::parseFault("STOR=reply:552 no room")};
    serve();
    EXPECT_EQ(25, upload("/a.bak"));
}

TEST_F(UploadLive, AMissingLocalFileNeverReachesTheServer)
{
    request.localPath = local("missing");
    serve();
    EXPECT_EQ(2, upload("/a.bak"));
    EXPECT_EQ("Failed initialization", errorText);
    EXPECT_TRUE(sessions().empty());
}

} // namespace
