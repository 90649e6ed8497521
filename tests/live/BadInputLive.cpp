#include "support/Codes.h"
#include "support/Live.h"

namespace {

// What a careless host can send: each ends with a code, and none crashes or leaks.
class BadInputLive : public Live
{
protected:
    // List, download, rename, delete, upload and the connection test.
    Lines runAll()
    {
        return {nameOf(facade.Listsftpdir(request, errorText)),
                nameOf(facade.DownLoadSFtpFile(request, errorText)),
                nameOf(facade.ReNameSFtpFile(request, errorText)),
                nameOf(facade.DelSFtpFile(request, errorText)),
                nameOf(facade.UploadFileToSFtpServer(request, errorText)),
                nameOf(testConnection())};
    }

    // All give this code but the download, which ends at its size check.
    static Lines all(const std::string& code) { return {code, "LIBRARY_FAILURE", code, code, code, code}; }
};

TEST_F(BadInputLive, AnEmptyRequest)
{
    request = {};
    Lines expected = all("CURLE_FAILED_INIT");
    expected.back() = "LIBRARY_FAILURE";
    EXPECT_TRUE(sameLines(expected, runAll()));
}

TEST_F(BadInputLive, AUrlThatDoesNotParse)
{
    request.remotePath = "ftp://exa mple:21/dir/";
    EXPECT_TRUE(sameLines(all("CURLE_URL_MALFORMAT"), runAll()));
}

TEST_F(BadInputLive, AnUnknownScheme)
{
    request.remotePath = "carrier-pigeon://localhost:21/dir/";
    EXPECT_TRUE(sameLines(all("CURLE_UNSUPPORTED_PROTOCOL"), runAll()));
}

TEST_F(BadInputLive, APortAbove65535IsIgnored)
{
    writeFile(served("a.bak"), "");
    serve();
    request.remotePath = url("/");
    request.port = 65536 + 21;
    EXPECT_EQ("CURLE_OK", nameOf(facade.Listsftpdir(request, errorText)));
    EXPECT_EQ("a.bak\n", contentOf(request.localPath));
}

TEST_F(BadInputLive, NamesWithLineBreaksReachTheServerAsCommands)
{
    writeFile(served("a.bak"), "");
    serve();
    request.remotePath = url("/");
    request.remoteFileName = "missing\r\nrm /a.bak";
    EXPECT_EQ("CURLE_QUOTE_ERROR", nameOf(facade.DelSFtpFile(request, errorText)));
    EXPECT_FALSE(exists(served("a.bak"))) << "the host must check the names that it passes on";
}

TEST_F(BadInputLive, ALocalPathWithAZeroByteEndsThere)
{
    writeFile(served("a.bak"), "the content");
    serve();
    request.remotePath = url("/a.bak");
    request.localPath = local("cut") + std::string("\0 off", 5);
    EXPECT_EQ("CURLE_OK", nameOf(facade.DownLoadSFtpFile(request, errorText)));
    EXPECT_EQ("the content", contentOf(local("cut")));
}

TEST_F(BadInputLive, AFileUrlReadsAndWritesLocalFiles)
{
    writeFile(local("secret"), "the content");
    request.remotePath = "file://" + local("secret");
    EXPECT_EQ("CURLE_OK", nameOf(facade.DownLoadSFtpFile(request, errorText)));
    EXPECT_EQ("the content", contentOf(request.localPath));
    request.remotePath = "file://" + local("copy");
    EXPECT_EQ("CURLE_OK", nameOf(facade.UploadFileToSFtpServer(request, errorText)));
    EXPECT_EQ("the content", contentOf(local("copy")));
}

} // namespace
