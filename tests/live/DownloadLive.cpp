#include "support/Codes.h"
#include "support/Live.h"

#include "support/RandomBytes.h"

#include <filesystem>

namespace {

using testserver::TlsMode;

class DownloadLive : public Live
{
protected:
    std::string download(const std::string& name)
    {
        request.remotePath = url("/" + name);
        return nameOf(facade.DownLoadSFtpFile(request, errorText));
    }

    static Lines retrieve(const std::string& name, std::size_t bytes)
    {
        return {"> EPSV",         "< 229 Entering Extended Passive Mode (|||PORT|)",
                "> TYPE I",       "< 200 type set",
                "> SIZE " + name, "< 213 " + std::to_string(bytes),
                "> RETR " + name, "< 150 data follows",
                "= TLS on data",  "= " + std::to_string(bytes) + " bytes sent",
                "< 226 done"};
    }
};

TEST_F(DownloadLive, TheSizeIsRequestedInTheClearAndTheFileOverTls)
{
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ("CURLE_OK", download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("the content", contentOf(request.localPath));
    EXPECT_TRUE(sameSessions(
        {clearLogin() + size("a.bak", "213 11") + quit(), tlsLogin() + retrieve("a.bak", 11) + quit()}, sessions()));
    EXPECT_TRUE(
        sameLines({"1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =11, fileSizeLimit = 53687091200",
                   "1 sftpSetCertTmp(): Establish SSL with cert",
                   "2 CurlSFtpResponse::DownLoadSFtpFile(): DownLoadSFtpFile():end "},
                  live::takeRecords()));
}

TEST_F(DownloadLive, TheSizeCheckPrintsHeadersAndATraceWithThePassword)
{
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ("CURLE_OK", download("a.bak"));
    EXPECT_EQ("Last-Modified: Thu, 01 Jan 2026 00:00:00 GMT\r\nContent-Length: 11\r\nAccept-ranges: bytes\r\n",
              out->content());
    EXPECT_NE(std::string::npos, err->content().find("> PASS correct horse battery"));
}

TEST_F(DownloadLive, ImplicitTlsCoversTheSizeCheckToo)
{
    config.tls = TlsMode::Implicit;
    writeFile(served("a.bak"), "the content");
    trustByDefault(authority.certificatePem());
    serve();
    EXPECT_EQ("CURLE_OK", download("a.bak"));
    EXPECT_EQ("the content", contentOf(request.localPath));
    EXPECT_TRUE(sameSessions(
        {implicitLogin() + size("a.bak", "213 11") + quit(), implicitLogin() + retrieve("a.bak", 11) + quit()},
        sessions()));
}

TEST_F(DownloadLive, ImplicitTlsNeedsTheCaInTheMachinesStoreForTheSizeCheck)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(testserver::CertificateAuthority("Another CA").certificatePem());
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ("LIBRARY_FAILURE", download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
}

TEST_F(DownloadLive, AnEmptyFile)
{
    writeFile(served("empty"), "");
    serve();
    EXPECT_EQ("CURLE_OK", download("empty"));
    EXPECT_EQ("", contentOf(request.localPath));
}

TEST_F(DownloadLive, AMissingFileIsReportedByTheDownload)
{
    serve();
    writeFile(request.localPath, "an old file");
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", download("missing"));
    EXPECT_EQ("Remote file not found", errorText);
    EXPECT_EQ("", contentOf(request.localPath)) << "emptied before the server was asked";
    EXPECT_EQ(2U, sessions().size());
}

TEST_F(DownloadLive, AMissingDirectoryFailsTheSizeCheck)
{
    serve();
    EXPECT_EQ("LIBRARY_FAILURE", download("missing/a.bak"));
    EXPECT_TRUE(sameLines(Lines{"4 SFtpClient::CheckFileSizeBeforeDownload(): "
                                "curl_easy_perform fail, res =Access denied to remote resource"},
                          live::takeRecords()));
}

TEST_F(DownloadLive, AHundredMebibytesByteByByte)
{
    const std::string content = randomBytes(100 * 1024 * 1024);
    writeFile(served("large"), content);
    serve();
    EXPECT_EQ("CURLE_OK", download("large"));
    EXPECT_TRUE(sameBytes(content, contentOf(request.localPath)));
}

TEST_F(DownloadLive, TheRetentionDatabaseBelowItsLimitIsFetched)
{
    makeSparse(served("RetentionDB.db"), 104857599);
    request.localPath = local("RetentionDB.db");
    serve();
    EXPECT_EQ("CURLE_OK", download("RetentionDB.db"));
    EXPECT_EQ(104857599U, std::filesystem::file_size(request.localPath));
}

TEST_F(DownloadLive, TheRetentionDatabaseAtItsLimitIsRefused)
{
    makeSparse(served("RetentionDB.db"), 104857600);
    request.localPath = local("RetentionDB.db");
    serve();
    EXPECT_EQ("LIBRARY_FAILURE", download("RetentionDB.db"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
    EXPECT_TRUE(sameLines({"1 SFtpClient::CheckFileSizeBeforeDownload(): "
                           "remoteFileSizeByte =104857600, fileSizeLimit = 104857600",
                           "4 SFtpClient::CheckFileSizeBeforeDownload(): file size is invalid."},
                          live::takeRecords()));
}

TEST_F(DownloadLive, TheSameFileUnderAnotherLocalNameIsFetched)
{
    makeSparse(served("RetentionDB.db"), 104857600);
    serve();
    EXPECT_EQ("CURLE_OK", download("RetentionDB.db"));
    EXPECT_EQ(104857600U, std::filesystem::file_size(request.localPath));
}

TEST_F(DownloadLive, AServerThatRequiresTlsAtLoginFailsTheSizeCheck)
{
    config.tlsRequiredAtLogin = true;
    writeFile(served("a.bak"), "the content");
    writeFile(request.localPath, "an old file");
    serve();
    EXPECT_EQ("LIBRARY_FAILURE", download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("an old file", contentOf(request.localPath));
    EXPECT_TRUE(sameSessions({greeting() + Lines({"> USER backup", "< 530 TLS first"})}, sessions()));
    EXPECT_TRUE(
        sameLines(Lines{"4 SFtpClient::CheckFileSizeBeforeDownload(): curl_easy_perform fail, res =Login denied"},
                  live::takeRecords()));
}

TEST_F(DownloadLive, TheClientItselfDoesNotCheckTheSize)
{
    writeFile(served("a.bak"), "the content");
    serve();
    request.remotePath = url("/a.bak");
    EXPECT_EQ("CURLE_OK", nameOf(ISFtpClient::CreateClient()->DownLoadSFtpFile(request, 90)->GetErrCode()));
    EXPECT_TRUE(sameSessions({tlsLogin() + retrieve("a.bak", 11) + quit()}, sessions()));
}

} // namespace
