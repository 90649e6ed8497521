#include "session/SessionLive.h"

#include "support/Codes.h"

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace {

constexpr std::int64_t kHole = 5368709120;
constexpr std::int64_t kLimit = 53687091200;
constexpr const char* kBig = "5368709123 bytes, the last ones: end";

void makeBig(const std::string& path)
{
    writeFile(path, "");
    std::filesystem::resize_file(path, kHole);
    std::ofstream(path, std::ios::app) << "end";
}

std::string described(const std::string& path)
{
    std::ifstream stream(path);
    stream.seekg(-3, std::ios::end);
    std::string end(3, '.');
    stream.read(end.data(), 3);
    return std::to_string(std::filesystem::file_size(path)) + " bytes, the last ones: " + end;
}

class BigFile : public SessionLive
{
protected:
    // The client's upload uses TLS only where the URL says so.
    void serveTheClient()
    {
        config.tls = testserver::TlsMode::Implicit;
        trustByDefault(authority.certificatePem());
        serve();
    }
};

TEST_F(BigFile, IsUploadedAndDownloadedByTheClient)
{
    serveTheClient();
    aimAt("/big");
    makeBig(request.localPath);
    EXPECT_EQ("CURLE_OK", nameOf(facade.UploadFileToSFtpServer(request, errorText)));
    EXPECT_EQ(kBig, described(served("big")));
    std::filesystem::remove(request.localPath);
    EXPECT_EQ("CURLE_OK", nameOf(facade.DownLoadSFtpFile(request, errorText)));
    EXPECT_EQ(kBig, described(request.localPath));
    EXPECT_TRUE(hasLine("1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =5368709123, "
                        "fileSizeLimit = 53687091200",
                        live::takeRecords()));
}

TEST_F(BigFile, IsUploadedAndDownloadedByASession)
{
    serve();
    aimAt("/big");
    makeBig(request.localPath);
    SFtpSession session;
    EXPECT_EQ("CURLE_OK", nameOf(session.UploadFileToSFtpServer(request, errorText))) << errorText;
    EXPECT_EQ(kBig, described(served("big")));
    EXPECT_EQ("CURLE_OK", nameOf(session.StatEntry(request, entry, errorText))) << errorText;
    EXPECT_EQ(kHole + 3, entry.size);
    std::filesystem::remove(request.localPath);
    EXPECT_EQ("CURLE_OK", nameOf(session.DownLoadSFtpFile(request, errorText))) << errorText;
    EXPECT_EQ(kBig, described(request.localPath));
}

TEST_F(BigFile, AtTheLimitIsRefusedByBoth)
{
    serveTheClient();
    aimAt("/huge");
    makeSparse(served("huge"), kLimit);
    EXPECT_EQ("LIBRARY_FAILURE", nameOf(facade.DownLoadSFtpFile(request, errorText)));
    EXPECT_TRUE(hasLine("1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =53687091200, "
                        "fileSizeLimit = 53687091200",
                        live::takeRecords()));
    EXPECT_EQ("CURLE_FILESIZE_EXCEEDED", nameOf(SFtpSession().DownLoadSFtpFile(request, errorText))) << errorText;
    EXPECT_FALSE(exists(request.localPath));
}

} // namespace
