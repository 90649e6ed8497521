#include "harness/Live.h"

namespace {

// What a careless host can send: each ends with a code, and none crashes or leaks.
class BadInputLive : public Live
{
protected:
    struct Results
    {
        int list, download, rename, remove, upload, test;
    };

    Results runAll()
    {
        Results results = {};
        results.list = facade.Listsftpdir(request, errorText);
        results.download = facade.DownLoadSFtpFile(request, errorText);
        results.rename = facade.ReNameSFtpFile(request, errorText);
        results.remove = facade.DelSFtpFile(request, errorText);
        results.upload = facade.UploadFileToSFtpServer(request, errorText);
        results.test = testConnection();
        return results;
    }
};

TEST_F(BadInputLive, AnEmptyRequest)
{
    request = {};
    const Results results = runAll();
    EXPECT_EQ(2, results.list);
    EXPECT_EQ(-1, results.download);
    EXPECT_EQ(2, results.rename);
    EXPECT_EQ(2, results.remove);
    EXPECT_EQ(2, results.upload);
    EXPECT_EQ(-1, results.test);
}

TEST_F(BadInputLive, AUrlThatDoesNotParse)
{
    request.remotePath = "ftp://exa mple:21/dir/";
    const Results results = runAll();
    EXPECT_EQ(3, results.list);
    EXPECT_EQ(-1, results.download);
    EXPECT_EQ(3, results.rename);
    EXPECT_EQ(3, results.remove);
    EXPECT_EQ(3, results.upload);
    EXPECT_EQ(3, results.test);
}

TEST_F(BadInputLive, AnUnknownScheme)
{
    request.remotePath = "carrier-pigeon://localhost:21/dir/";
    const Results results = runAll();
    EXPECT_EQ(1, results.list);
    EXPECT_EQ(-1, results.download);
    EXPECT_EQ(1, results.rename);
    EXPECT_EQ(1, results.remove);
    EXPECT_EQ(1, results.upload);
    EXPECT_EQ(1, results.test);
}

TEST_F(BadInputLive, APortAbove65535IsIgnored)
{
    writeFile(served("a.bak"), "");
    serve();
    request.remotePath = url("/");
    request.port = 65536 + 21;
    EXPECT_EQ(0, facade.Listsftpdir(request, errorText));
    EXPECT_EQ("a.bak\n", contentOf(request.localPath));
}

TEST_F(BadInputLive, AFolderAsLocalPath)
{
    writeFile(served("a.bak"), "the content");
    serve();
    request.localPath = local("");
    request.remotePath = url("/a.bak");
    EXPECT_EQ(2, facade.DownLoadSFtpFile(request, errorText));
    EXPECT_EQ(2, facade.Listsftpdir(request, errorText));
    // A folder can be opened for reading; the first read of it fails.
    EXPECT_NE(0, facade.UploadFileToSFtpServer(request, errorText));
}

TEST_F(BadInputLive, NamesWithLineBreaksReachTheServerAsCommands)
{
    writeFile(served("a.bak"), "");
    serve();
    request.remotePath = url("/");
    request.remoteFileName = "missing\r\nrm /a.bak";
    EXPECT_EQ(21, facade.DelSFtpFile(request, errorText));
    EXPECT_FALSE(exists(served("a.bak"))) << "the host must check the names that it passes on";
}

TEST_F(BadInputLive, ALocalPathWithAZeroByteEndsThere)
{
    writeFile(served("a.bak"), "the content");
    serve();
    request.remotePath = url("/a.bak");
    request.localPath = local("cut") + std::string("\0 off", 5);
    EXPECT_EQ(0, facade.DownLoadSFtpFile(request, errorText));
    EXPECT_EQ("the content", contentOf(local("cut")));
}

TEST_F(BadInputLive, AFileUrlReadsAndWritesLocalFiles)
{
    writeFile(local("secret"), "the content");
    request.remotePath = "file://" + local("secret");
    EXPECT_EQ(0, facade.DownLoadSFtpFile(request, errorText));
    EXPECT_EQ("the content", contentOf(request.localPath));
    request.remotePath = "file://" + local("copy");
    EXPECT_EQ(0, facade.UploadFileToSFtpServer(request, errorText));
    EXPECT_EQ("the content", contentOf(local("copy")));
}

} // namespace
