// Sessions through a proxy, which carries the connections and has no say in what the server says.
#include "SessionLive.h"
#include "support/HttpProxy.h"

#include <cstdlib>

namespace {

class SessionProxy : public SessionLive
{
protected:
    // A file whose size is not known, and whose end the server does not announce.
    void serveWithoutEnd()
    {
        writeFile(served("a.bak"), "0123456789");
        misbehave("SIZE=reply:500 unknown");
        misbehave("DATA=no-close-notify");
        serve();
        aimAt("/a.bak");
    }

    int downloadThrough(const HttpProxy& proxy)
    {
        SessionOptions options;
        options.proxy = proxy.url();
        return SFtpSession(options).DownLoadSFtpFile(request, errorText);
    }
};

} // namespace

TEST_F(SessionProxy, CarriesEveryConnection)
{
    for (const bool overTls : {false, true}) {
        SCOPED_TRACE(overTls);
        trustByDefault(authority.certificatePem());
        const HttpProxy proxy({}, overTls ? std::optional(authority.issue()) : std::nullopt);
        SessionOptions options;
        options.proxy = proxy.url();
        serve();
        aimAt("/a.bak");
        writeFile(request.localPath, "content");
        {
            SFtpSession session(options);
            EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
            EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
            aimAt("/");
            EXPECT_EQ(0, session.ListEntries(request, entries, errorText)) << errorText;
        }
        EXPECT_EQ("content", contentOf(request.localPath));
        EXPECT_EQ(1U, entries.size());
        EXPECT_EQ(1U, sessions().size());
        EXPECT_EQ(4U, proxy.clients());
        stopServing();
    }
}

TEST_F(SessionProxy, IsNotLeftOutBecauseTheEnvironmentSaysSo)
{
    serve();
    aimAt("/");
    SessionOptions options;
    options.proxy = "http://127.0.0.1:1";
    for (const char* const name : {"no_proxy", "NO_PROXY"}) {
        SCOPED_TRACE(name);
        setenv(name, "*", 1);
        SFtpSession session(options);
        EXPECT_EQ(CURLE_COULDNT_CONNECT, session.TestSConnect(request, errorText)) << errorText;
        unsetenv(name);
    }
    EXPECT_TRUE(sessions().empty());
}

// A line of its answer that looks like the server's.
TEST_F(SessionProxy, CannotTellTheSizeOfAFile)
{
    serveWithoutEnd();
    const HttpProxy proxy({{2, "HTTP/1.1 200 OK\r\n213 10"}});
    EXPECT_EQ(CURLE_RECV_ERROR, downloadThrough(proxy)) << errorText;
    EXPECT_FALSE(exists(request.localPath));
}

TEST_F(SessionProxy, CannotAnnounceTheEndOfAFile)
{
    serveWithoutEnd();
    trustByDefault(authority.certificatePem());
    const HttpProxy proxy({}, authority.issue());
    EXPECT_EQ(CURLE_RECV_ERROR, downloadThrough(proxy)) << errorText;
    EXPECT_FALSE(exists(request.localPath));
}

TEST_F(SessionProxy, ThatRefusesIsNotTheServer)
{
    serve();
    aimAt("/a.bak");
    const HttpProxy proxy({{1, "HTTP/1.1 502 no\r\n530 go away"}});
    EXPECT_EQ(CURLE_RECV_ERROR, downloadThrough(proxy));
    EXPECT_EQ("Failure when receiving data from the peer: CONNECT tunnel failed, response 502", errorText);
}
