#include "harness/Live.h"

#include <filesystem>
#include <random>

namespace {

using testserver::TlsMode;

class DownloadLive : public Live
{
protected:
    int download(const std::string& name)
    {
        request.remotePath = url("/" + name);
        return facade.DownLoadSFtpFile(request, errorText);
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

TEST_F(DownloadLive, TheSizeIsAskedInTheClearAndTheFileFetchedOverTls)
{
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ(0, download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("the content", contentOf(request.localPath));
    EXPECT_EQ(std::vector<Lines>(
                  {clearLogin() + size("a.bak", "213 11") + goodbye(), tlsLogin() + retrieve("a.bak", 11) + goodbye()}),
              sessions());
    EXPECT_EQ(Lines({"1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =11, fileSizeLimit = 53687091200",
                     "1 sftpSetCertTmp(): Establish SSL with cert",
                     "2 CurlSFtpResponse::DownLoadSFtpFile(): DownLoadSFtpFile():end "}),
              live::takeRecords());
}

TEST_F(DownloadLive, TheSizeCheckPrintsHeadersAndATraceWithThePassword)
{
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ(0, download("a.bak"));
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
    EXPECT_EQ(0, download("a.bak"));
    EXPECT_EQ("the content", contentOf(request.localPath));
    EXPECT_EQ(std::vector<Lines>({implicitLogin() + size("a.bak", "213 11") + goodbye(),
                                  implicitLogin() + retrieve("a.bak", 11) + goodbye()}),
              sessions());
}

TEST_F(DownloadLive, ImplicitTlsNeedsTheCaInTheMachinesStoreForTheSizeCheck)
{
    config.tls = TlsMode::Implicit;
    trustByDefault(testserver::CertificateAuthority("Another CA").certificatePem());
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ(-1, download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
}

TEST_F(DownloadLive, AnEmptyFile)
{
    writeFile(served("empty"), "");
    serve();
    EXPECT_EQ(0, download("empty"));
    EXPECT_EQ("", contentOf(request.localPath));
}

TEST_F(DownloadLive, AMissingFileIsReportedByTheDownload)
{
    serve();
    writeFile(request.localPath, "an old file");
    EXPECT_EQ(78, download("missing"));
    EXPECT_EQ("Remote file not found", errorText);
    EXPECT_EQ("", contentOf(request.localPath)) << "emptied before the server was asked";
    EXPECT_EQ(2U, sessions().size());
}

TEST_F(DownloadLive, AMissingDirectoryEndsItAtTheSizeCheck)
{
    serve();
    EXPECT_EQ(-1, download("missing/a.bak"));
    EXPECT_EQ(Lines{"4 SFtpClient::CheckFileSizeBeforeDownload(): "
                    "curl_easy_perform fail, res =Access denied to remote resource"},
              live::takeRecords());
}

TEST_F(DownloadLive, AHundredMebibytesByteByByte)
{
    std::mt19937_64 random(20261121);
    std::string content(100 * 1024 * 1024, '\0');
    for (std::size_t i = 0; i < content.size(); i += 8) {
        const std::uint64_t value = random();
        content.replace(i, 8, reinterpret_cast<const char*>(&value), 8);
    }
    writeFile(served("large"), content);
    serve();
    EXPECT_EQ(0, download("large"));
    EXPECT_TRUE(content == contentOf(request.localPath));
}

TEST_F(DownloadLive, TheRetentionDatabaseBelowItsLimitIsFetched)
{
    makeSparse(served("RetentionDB.db"), 104857599);
    request.localPath = local("RetentionDB.db");
    serve();
    EXPECT_EQ(0, download("RetentionDB.db"));
    EXPECT_EQ(104857599U, std::filesystem::file_size(request.localPath));
}

TEST_F(DownloadLive, TheRetentionDatabaseAtItsLimitIsRefused)
{
    makeSparse(served("RetentionDB.db"), 104857600);
    request.localPath = local("RetentionDB.db");
    serve();
    EXPECT_EQ(-1, download("RetentionDB.db"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
    EXPECT_EQ(Lines({"1 SFtpClient::CheckFileSizeBeforeDownload(): "
                     "remoteFileSizeByte =104857600, fileSizeLimit = 104857600",
                     "4 SFtpClient::CheckFileSizeBeforeDownload(): file size is invalid."}),
              live::takeRecords());
}

TEST_F(DownloadLive, TheSameFileUnderAnotherLocalNameIsFetched)
{
    makeSparse(served("RetentionDB.db"), 104857600);
    serve();
    EXPECT_EQ(0, download("RetentionDB.db"));
    EXPECT_EQ(104857600U, std::filesystem::file_size(request.localPath));
}

TEST_F(DownloadLive, FiftyGibibytesAreRefused)
{
    makeSparse(served("huge"), 53687091200);
    serve();
    EXPECT_EQ(-1, download("huge"));
    EXPECT_FALSE(exists(request.localPath));
    EXPECT_EQ(std::vector<Lines>{clearLogin() + size("huge", "213 53687091200") + goodbye()}, sessions());
}

TEST_F(DownloadLive, AServerThatDemandsTlsAtLoginStopsItAtTheSizeCheck)
{
    config.tlsRequiredAtLogin = true;
    writeFile(served("a.bak"), "the content");
    writeFile(request.localPath, "an old file");
    serve();
    EXPECT_EQ(-1, download("a.bak"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("an old file", contentOf(request.localPath));
    EXPECT_EQ(std::vector<Lines>({greeting() + Lines({"> USER backup", "< 530 TLS first"})}), sessions());
    EXPECT_EQ(Lines{"4 SFtpClient::CheckFileSizeBeforeDownload(): curl_easy_perform fail, res =Login denied"},
              live::takeRecords());
}

TEST_F(DownloadLive, AServerThatKnowsNoSizeStopsIt)
{
    config.faults = {testserver::parseFault("SIZE=reply:500 unknown command")};
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ(-1, download("a.bak"));
    EXPECT_EQ(Lines({"1 SFtpClient::CheckFileSizeBeforeDownload(): "
                     "remoteFileSizeByte =-1, fileSizeLimit = 53687091200",
                     "4 SFtpClient::CheckFileSizeBeforeDownload(): file size is invalid."}),
              live::takeRecords());
}

TEST_F(DownloadLive, ADroppedConnectionLeavesWhatArrived)
{
    config.faults = {testserver::parseFault("DATA=drop-after:5")};
    writeFile(served("a.bak"), "the content");
    serve();
    EXPECT_EQ(18, download("a.bak"));
    EXPECT_EQ("Transferred a partial file", errorText);
    EXPECT_EQ("the c", contentOf(request.localPath));
}

TEST_F(DownloadLive, AFullDiskIsAWriteErrorEvenForTwentyBytes)
{
    writeFile(served("a.bak"), "twenty bytes of data");
    request.localPath = "/dev/full";
    serve();
    EXPECT_EQ(23, download("a.bak"));
}

TEST_F(DownloadLive, TheClientItselfChecksNoSize)
{
    writeFile(served("a.bak"), "the content");
    serve();
    request.remotePath = url("/a.bak");
    EXPECT_EQ(0, ISFtpClient::CreateClient()->DownLoadSFtpFile(request, 90)->GetErrCode());
    EXPECT_EQ(std::vector<Lines>{tlsLogin() + retrieve("a.bak", 11) + goodbye()}, sessions());
}

} // namespace
