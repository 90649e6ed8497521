// Which connections a session keeps, shares and makes anew.
#include "SessionLive.h"

#include <filesystem>
#include <thread>

namespace {

class SessionConnections : public SessionLive
{
protected:
    SessionConnections()
    {
        std::filesystem::create_directory(served("a"));
        std::filesystem::create_directory(served("b"));
    }

    int visit(SFtpSession& session, const char* path)
    {
        aimAt(path);
        return session.TestSConnect(request, errorText);
    }
};

} // namespace

TEST_F(SessionConnections, OneIsEnoughForOneCallAfterTheOther)
{
    serve();
    {
        SFtpSession session;
        for (const char* const path : {"/a/", "/b/", "/", "/a/"}) {
            EXPECT_EQ(0, visit(session, path)) << errorText;
        }
    }
    const std::vector<Lines> said = sessions();
    ASSERT_EQ(1U, said.size());
    EXPECT_TRUE(sameLines(quit(), lastOf(said[0], 2)));
}

TEST_F(SessionConnections, AnotherLoginOrAuthorityHasOneOfItsOwn)
{
    serve();
    {
        SFtpSession session;
        EXPECT_EQ(0, visit(session, "/")) << errorText;
        request.password += "x";
        EXPECT_EQ(CURLE_LOGIN_DENIED, visit(session, "/"));
        request.password = config.password;
        request.caCert += testserver::CertificateAuthority("Another CA").certificatePem();
        EXPECT_EQ(0, visit(session, "/")) << errorText;
        request.caCert = authority.certificatePem();
        EXPECT_EQ(0, visit(session, "/")) << errorText;
    }
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(SessionConnections, TwoSessionsShareNone)
{
    serve();
    {
        SFtpSession one;
        SFtpSession two;
        EXPECT_EQ(0, visit(one, "/")) << errorText;
        EXPECT_EQ(0, visit(two, "/")) << errorText;
    }
    EXPECT_EQ(2U, sessions().size());
}

TEST_F(SessionConnections, NoneIsKeptBeyondItsIdleTime)
{
    serve();
    {
        SessionOptions options;
        options.idleTimeout = std::chrono::milliseconds(0);
        SFtpSession session(options);
        EXPECT_EQ(0, visit(session, "/")) << errorText;
        EXPECT_EQ(0, visit(session, "/")) << errorText;
    }
    EXPECT_EQ(2U, sessions().size());
}

TEST_F(SessionConnections, AsManyAtOnceAsAreAllowed)
{
    constexpr unsigned kThreads = 8;
    constexpr unsigned kMost = 3;
    // Each of the first three waits until three are there: fewer would hang, more would be a fourth session.
    for (unsigned i = 1; i <= kMost; ++i) {
        misbehave(std::to_string(i) + "/USER=meet:" + std::to_string(kMost));
    }
    serve();
    {
        SessionOptions options;
        options.maxConnections = kMost;
        SFtpSession session(options);
        aimAt("/a/");
        std::vector<std::thread> threads;
        std::vector<int> codes(kThreads, -1);
        for (unsigned i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                std::string text;
                codes[i] = session.TestSConnect(request, text);
            });
        }
        for (std::thread& each : threads) {
            each.join();
        }
        EXPECT_EQ(std::vector<int>(kThreads, 0), codes);
    }
    EXPECT_EQ(kMost, sessions().size());
}

TEST_F(SessionConnections, AServerWithNothingButTls13IsServedToo)
{
    config.minTlsVersion = 0x0304;
    serve();
    aimAt("/a.bak");
    writeFile(request.localPath, "content");
    {
        SFtpSession session;
        EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
        EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    }
    EXPECT_EQ("content", contentOf(served("a.bak")));
    // One that speaks TLS 1.2 and is refused; one that uploads, and ends with that; one that downloads.
    EXPECT_EQ(3U, sessions().size());
}

// Each line that begins with ">" is a round trip.
TEST_F(SessionConnections, AWarmConnectionRepeatsNothing)
{
    serve();
    writeFile(local("file"), "content");
    {
        SFtpSession session;
        for (int i = 0; i < 2; ++i) {
            request.localPath = local("file");
            aimAt("/a/a.bak");
            EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
            EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
            EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
            EXPECT_EQ(0, session.StatEntry(request, entry, errorText)) << errorText;
            aimAt("/a/");
            EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
            EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
        }
    }
    Lines asked;
    const Lines said = sessions().at(0);
    for (const std::string& line : said) {
        if (line.compare(0, 2, "> ") == 0) {
            asked.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    const Lines upload = {"EPSV", "STOR", "SIZE", "RNFR", "RNTO"};
    const Lines download = {"EPSV", "SIZE", "RETR"};
    const Lines list = {"EPSV", "MLSD"};
    const Lines warm = Lines{"EPSV", "TYPE", "STOR", "SIZE", "RNFR", "RNTO"} + upload + download + Lines{"MLST"} +
                       Lines{"EPSV", "TYPE", "MLSD"} + list + Lines{"QUIT"};
    EXPECT_TRUE(sameLines(warm, lastOf(asked, warm.size())));
}
