#include "support/Codes.h"
#include "support/Live.h"

#include "support/RandomBytes.h"

namespace {

using testserver::TlsMode;

class UploadLive : public Live
{
protected:
    UploadLive() { writeFile(request.localPath, "the content"); }

    std::string upload(const std::string& path)
    {
        request.remotePath = url(path);
        return nameOf(facade.UploadFileToSFtpServer(request, errorText));
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
    EXPECT_EQ("CURLE_OK", upload("/a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("the content", contentOf(served("a.bak")));
    EXPECT_TRUE(sameSessions({clearLogin() + store("a.bak", 11, false) + quit()}, sessions()));
    EXPECT_TRUE(sameLines(Lines{}, live::takeRecords()));
    EXPECT_EQ("", out->content());
    EXPECT_EQ("", err->content());
}

TEST_F(UploadLive, AnFtpsUrlGoesOverTls)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(authority.certificatePem());
    serve();
    EXPECT_EQ("CURLE_OK", upload("/a.bak"));
    EXPECT_EQ("the content", contentOf(served("a.bak")));
    EXPECT_TRUE(sameSessions({implicitLogin() + store("a.bak", 11, true) + quit()}, sessions()));
}

TEST_F(UploadLive, TheRequestsCertificateIsIgnored)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(testserver::CertificateAuthority("Another CA").certificatePem());
    serve();
    EXPECT_EQ("CURLE_PEER_FAILED_VERIFICATION", upload("/a.bak"));
    EXPECT_FALSE(exists(served("a.bak")));
}

TEST_F(UploadLive, MissingDirectoriesAreCreated)
{
    serve();
    EXPECT_EQ("CURLE_OK", upload("/weekly/monday/a.bak"));
    EXPECT_EQ("the content", contentOf(served("weekly/monday/a.bak")));
    EXPECT_TRUE(sameSessions(
        {clearLogin() +
         Lines({"> CWD weekly", "< 550 no such directory", "> MKD weekly", "< 257 \"/weekly\" made", "> CWD weekly",
                "< 250 directory changed", "> CWD monday", "< 550 no such directory", "> MKD monday",
                "< 257 \"/weekly/monday\" made", "> CWD monday", "< 250 directory changed"}) +
         store("a.bak", 11, false) + quit()},
        sessions()));
}

TEST_F(UploadLive, AnEmptyFile)
{
    writeFile(request.localPath, "");
    serve();
    EXPECT_EQ("CURLE_OK", upload("/empty"));
    EXPECT_EQ("", contentOf(served("empty")));
    EXPECT_TRUE(sameSessions({clearLogin() + store("empty", 0, false) + quit()}, sessions()));
}

TEST_F(UploadLive, ManyMebibytes)
{
    const std::string content = randomBytes(16 * 1024 * 1024);
    writeFile(request.localPath, content);
    serve();
    EXPECT_EQ("CURLE_OK", upload("/large"));
    EXPECT_TRUE(sameBytes(content, contentOf(served("large"))));
}

TEST_F(UploadLive, AServerThatRequiresTlsAtLoginRefusesIt)
{
    config.tlsRequiredAtLogin = true;
    serve();
    EXPECT_EQ("CURLE_LOGIN_DENIED", upload("/a.bak"));
    EXPECT_EQ("Login denied", errorText);
    EXPECT_TRUE(sameLines({"4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                           "4 CurlSFtpResponse::UploadFileToSFtpServer(): "
                           "Perform upload file failed, m_ErrorCodeis 67, errorString isLogin denied",
                           "4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                           "4 CurlSFtpResponse::GetErrString(): Get error string: Login denied",
                           "4 SFtpClient::UploadFileToSFtpServer(): "
                           "Send SFtp request occur network error. Error  is Login denied"},
                          live::takeRecords()));
}

} // namespace
