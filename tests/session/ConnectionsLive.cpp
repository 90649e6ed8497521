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

TEST_F(SessionConnections, WhereOneWasDeadTheOthersAreNotTried)
{
    for (const char* const each : {"1/USER=meet:2", "2/USER=meet:2", "1/CWD#2=drop", "2/CWD#2=drop"}) {
        misbehave(each);
    }
    serve();
    {
        SFtpSession session;
        aimAt("/a/");
        std::string text;
        std::thread other([&] { EXPECT_EQ(0, session.TestSConnect(request, text)) << text; });
        EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
        other.join();
        aimAt("/b/");
        EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
    }
    EXPECT_EQ(3U, sessions().size());
}

// Otherwise each command would get the reply to the one before: a delete that was refused would have succeeded.
TEST_F(SessionConnections, OneWithAReplyTooManyServesNoOther)
{
    for (const char* const reply : {"226 done", "250 fine", "200 fine", "350 go on", "550 no"}) {
        SCOPED_TRACE(reply);
        config.faults.clear();
        misbehave(std::string("1/DONE=reply:226 done\\r\\n") + reply);
        serve();
        writeFile(served("a.bak"), "content");
        {
            SFtpSession session;
            aimAt("/a.bak");
            request.localPath = local("got");
            EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
            aimAt("/");
            request.remoteFileName = "missing";
            EXPECT_EQ(CURLE_QUOTE_ERROR, session.DelSFtpFile(request, errorText));
            EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
        }
        EXPECT_EQ(2U, sessions().size());
        stopServing();
    }
}

// And what it has begun, leaves nothing.
TEST_F(SessionConnections, AGoodbyeAtAnyTimeCostsOneCall)
{
    for (const char* const moment : {"CWD", "EPSV", "TYPE", "STOR", "SIZE", "RNFR", "RNTO", "DONE", "FEAT", "MLSD",
                                     "MLST", "NLST", "RETR", "DELE"}) {
        SCOPED_TRACE(moment);
        config.faults.clear();
        misbehave(std::string("1/") + moment + "#1=last:421 closing");
        serve();
        SFtpSession session;
        writeFile(local("file"), "content");
        unsigned failures = 0;
        for (int round = 0; round < 2; ++round) {
            aimAt("/a/up.bak");
            request.localPath = local("file");
            request.remoteFileName = "up.bak";
            failures += session.UploadFileToSFtpServer(request, errorText) != 0 ? 1U : 0U;
            failures += session.StatEntry(request, entry, errorText) != 0 ? 1U : 0U;
            failures += session.DownLoadSFtpFile(request, errorText) != 0 ? 1U : 0U;
            aimAt("/a/");
            failures += session.ListEntries(request, entries, errorText) != 0 ? 1U : 0U;
            failures += session.Listsftpdir(request, errorText) != 0 ? 1U : 0U;
            failures += session.DelSFtpFile(request, errorText) != 0 ? 1U : 0U;
            // Of an upload that failed there is nothing to tell, to download and to delete.
            EXPECT_GE(round == 0 ? 4U : 0U, failures) << errorText;
            failures = 0;
        }
        EXPECT_TRUE(std::filesystem::is_empty(served("a")));
        stopServing();
    }
}

// Where a data connection broke off, the TLS session has gone that the server wants to see again.
TEST_F(SessionConnections, ABrokenTransferEndsTheOneThatWasKept)
{
    for (const std::string fault : {"1/DATA#1=reset-after:0", "1/DATA#1=drop-after:3"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        serve();
        aimAt("/a.bak");
        writeFile(request.localPath, "content");
        {
            SFtpSession session;
            EXPECT_NE(0, session.UploadFileToSFtpServer(request, errorText));
            EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
            EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
        }
        EXPECT_EQ("content", contentOf(served("a.bak")));
        stopServing();
    }
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
