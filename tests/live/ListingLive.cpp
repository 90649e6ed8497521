#include "support/Codes.h"
#include "support/Live.h"

#include <filesystem>

namespace {

class ListingLive : public Live
{
protected:
    std::string list(const std::string& path)
    {
        request.remotePath = url(path);
        return nameOf(facade.Listsftpdir(request, errorText));
    }
};

// The server ends names with CR LF; libcurl converts that to LF, because it lists in ASCII mode.
TEST_F(ListingLive, OneNamePerLine)
{
    writeFile(served("b.bak"), "");
    writeFile(served("a.bak"), "content");
    serve();
    EXPECT_EQ("CURLE_OK", list("/"));
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("a.bak\nb.bak\n", contentOf(request.localPath));
    EXPECT_TRUE(sameSessions({tlsLogin() + names("NLST", 14) + quit()}, sessions()));
    EXPECT_TRUE(sameLines(
        {"1 sftpSetCertTmp(): Establish SSL with cert", "2 CurlSFtpResponse::Listsftpdir(): Listsftpdir():end "},
        live::takeRecords()));
    EXPECT_EQ("", out->content());
    EXPECT_EQ("", err->content());
}

TEST_F(ListingLive, ASubdirectory)
{
    std::filesystem::create_directory(served("weekly"));
    writeFile(served("weekly/a.bak"), "");
    serve();
    EXPECT_EQ("CURLE_OK", list("/weekly/"));
    EXPECT_EQ("a.bak\n", contentOf(request.localPath));
}

TEST_F(ListingLive, AnEmptyDirectoryGivesAnEmptyFile)
{
    writeFile(request.localPath, "an old listing");
    serve();
    EXPECT_EQ("CURLE_OK", list("/"));
    EXPECT_EQ("", contentOf(request.localPath));
    EXPECT_TRUE(sameSessions({tlsLogin() + names("NLST", 0) + quit()}, sessions()));
}

TEST_F(ListingLive, ManyNames)
{
    std::string expected;
    for (int i = 1000; i < 2000; ++i) {
        const std::string name = "file-" + std::to_string(i);
        writeFile(served(name), "");
        expected += name + "\n";
    }
    serve();
    EXPECT_EQ("CURLE_OK", list("/"));
    EXPECT_EQ(expected, contentOf(request.localPath));
}

TEST_F(ListingLive, AMissingDirectoryIsReportedAsAMissingFile)
{
    serve();
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", list("/missing/"));
    EXPECT_EQ("Access denied to remote resource", errorText) << "the text belongs to the code before it is translated";
    EXPECT_TRUE(
        sameLines({"1 sftpSetCertTmp(): Establish SSL with cert",
                   "4 CurlSFtpResponse::Listsftpdir(): Listsftpdir() list dir failed.code:9",
                   "4 CurlSFtpResponse::GetErrString(): Get error string: Access denied to remote resource",
                   "4 CurlSFtpResponse::GetErrString(): Get error string: Access denied to remote resource",
                   "4 SFtpClient::Listsftpdir(): Listsftpdir():Send SFtp request occur network error. Error  is "
                   "Access denied to remote resource"},
                  live::takeRecords()));
}

TEST_F(ListingLive, AServerThatRequiresTlsAtLoginWorks)
{
    config.tlsRequiredAtLogin = true;
    writeFile(served("a.bak"), "");
    serve();
    EXPECT_EQ("CURLE_OK", list("/"));
    EXPECT_EQ("a.bak\n", contentOf(request.localPath));
}

} // namespace
