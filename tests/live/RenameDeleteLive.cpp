#include "support/Codes.h"
#include "support/Live.h"

#include <filesystem>

namespace {

using testserver::TlsMode;

class RenameDeleteLive : public Live
{
protected:
    RenameDeleteLive()
    {
        std::filesystem::create_directory(served("weekly"));
        writeFile(served("weekly/a.bak"), "content");
        request.remoteFileName = "a.bak";
    }

    std::string rename()
    {
        request.remotePath = url("/weekly/");
        request.localPath = "b.bak";
        return nameOf(facade.ReNameSFtpFile(request, errorText));
    }

    std::string remove()
    {
        request.remotePath = url("/weekly/");
        return nameOf(facade.DelSFtpFile(request, errorText));
    }

    static constexpr const char* kListing = "-rw-r--r-- 1 backup backup 7 Jan 01 00:00 a.bak\n";

    // The visit of the directory, then the command. On the wire, the listing's line ends in CR LF.
    static Lines visit(const std::string& command, const std::string& reply)
    {
        return Lines{"> CWD weekly", "< 250 directory changed"} + names("LIST", std::string(kListing).size() + 1) +
               Lines{"> " + command, "< " + reply};
    }
};

TEST_F(RenameDeleteLive, RenameSendsItsCommandAfterTheVisit)
{
    serve();
    EXPECT_EQ("CURLE_OK", rename());
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(served("weekly/a.bak")));
    EXPECT_EQ("content", contentOf(served("weekly/b.bak")));
    EXPECT_TRUE(
        sameSessions({tlsLogin() + visit("rename /weekly/a.bak /weekly/b.bak", "250 renamed") + quit()}, sessions()));
    EXPECT_TRUE(sameLines(
        {"1 sftpSetCertTmp(): Establish SSL with cert", "2 CurlSFtpResponse::ReNameSFtpFile(): ReNameSFtpFile():end "},
        live::takeRecords()));
}

TEST_F(RenameDeleteLive, RenamePrintsTheListing)
{
    serve();
    EXPECT_EQ("CURLE_OK", rename());
    EXPECT_EQ(kListing, out->content());
}

TEST_F(RenameDeleteLive, RenameOfAMissingFileIsAQuoteError)
{
    request.remoteFileName = "missing";
    serve();
    EXPECT_EQ("CURLE_QUOTE_ERROR", rename());
    EXPECT_EQ("Quote command returned error", errorText);
    EXPECT_TRUE(exists(served("weekly/a.bak")));
}

TEST_F(RenameDeleteLive, DeleteSendsItsCommandAfterTheVisit)
{
    serve();
    EXPECT_EQ("CURLE_OK", remove());
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(served("weekly/a.bak")));
    EXPECT_TRUE(sameSessions({tlsLogin() + visit("rm /weekly/a.bak", "250 removed") + quit()}, sessions()));
    EXPECT_TRUE(sameLines(
        {"1 sftpSetCertTmp(): Establish SSL with cert", "2 CurlSFtpResponse::DelSFtpFile(): DelSFtpFile():end "},
        live::takeRecords()));
}

TEST_F(RenameDeleteLive, DeletePrintsNothing)
{
    serve();
    EXPECT_EQ("CURLE_OK", remove());
    EXPECT_EQ("", out->content());
}

TEST_F(RenameDeleteLive, DeleteOfAMissingFileIsAQuoteError)
{
    request.remoteFileName = "missing";
    serve();
    EXPECT_EQ("CURLE_QUOTE_ERROR", remove());
    EXPECT_TRUE(exists(served("weekly/a.bak")));
}

TEST_F(RenameDeleteLive, BothWorkOverImplicitTls)
{
    config.tls = TlsMode::Implicit;
    serve();
    EXPECT_EQ("CURLE_OK", rename());
    request.remoteFileName = "b.bak";
    EXPECT_EQ("CURLE_OK", remove());
    EXPECT_FALSE(exists(served("weekly/b.bak")));
    EXPECT_TRUE(sameLines(implicitLogin() + visit("rename /weekly/a.bak /weekly/b.bak", "250 renamed") + quit(),
                          sessions()[0]));
}

} // namespace
