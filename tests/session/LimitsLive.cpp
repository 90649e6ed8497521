// What ends a call that the server, or the caller, holds up.
#include "SessionLive.h"

#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

namespace {

using std::chrono::milliseconds;

class SessionLimits : public SessionLive
{
protected:
    // A call's limit only keeps a test from hanging for ever when the other one fails to work.
    static SessionOptions limited(milliseconds SessionOptions::*field)
    {
        SessionOptions options;
        options.*field = milliseconds(300);
        options.callTimeout = milliseconds(30000);
        return options;
    }

    int download(const SessionOptions& options)
    {
        aimAt("/a.bak");
        SFtpSession session(options);
        return session.DownLoadSFtpFile(request, errorText);
    }
};

} // namespace

TEST_F(SessionLimits, ADownloadWithoutAFirstByteHasStalled)
{
    misbehave("DATA=stall-after:0");
    serve();
    writeFile(served("a.bak"), "content");
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, download(limited(&SessionOptions::stallTimeout)));
    EXPECT_NE(std::string::npos, errorText.find("no byte moved for stallTimeout, 300 ms")) << errorText;
}

TEST_F(SessionLimits, AListingWithoutAFirstByteHasStalled)
{
    misbehave("DATA=stall-after:0");
    serve();
    writeFile(served("a.bak"), "content");
    aimAt("/");
    SFtpSession session(limited(&SessionOptions::stallTimeout));
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, session.ListEntries(request, entries, errorText));
    EXPECT_NE(std::string::npos, errorText.find("no byte moved for stallTimeout, 300 ms")) << errorText;
}

// All bytes are libcurl's by then, but not the server's.
TEST_F(SessionLimits, AnUploadWhoseLastBytesAreNotTakenHasStalled)
{
    misbehave("DATA=stall-after:1000");
    serve();
    Live::makeSparse(request.localPath, 64 * 1024 * 1024);
    aimAt("/a.bak");
    SFtpSession session(limited(&SessionOptions::stallTimeout));
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_NE(std::string::npos, errorText.find("no byte moved for stallTimeout, 300 ms")) << errorText;
}

TEST_F(SessionLimits, AReplyThatDoesNotComeIsNamed)
{
    for (const char* const fault : {"EPSV=stall", "RETR=stall", "SIZE=stall"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        serve();
        writeFile(served("a.bak"), "content");
        EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, download(limited(&SessionOptions::replyTimeout)));
        EXPECT_NE(std::string::npos, errorText.find("no reply for replyTimeout, 300 ms")) << errorText;
        stopServing();
    }
}

// A call that was running when Cancel was called must not take ClearCancel for a pardon.
TEST_F(SessionLimits, ClearCancelIsForLaterCalls)
{
    serve();
    writeFile(served("a.bak"), "content");
    aimAt("/a.bak");
    SFtpSession session;
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.DownLoadTo(
                                             request,
                                             [&session](const char*, std::size_t) {
                                                 session.Cancel();
                                                 session.ClearCancel();
                                                 return true;
                                             },
                                             errorText))
        << errorText;
    EXPECT_NE(std::string::npos, errorText.find("Cancel() was called")) << errorText;
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
}

TEST_F(SessionLimits, CancelEndsACallThatCannotBe)
{
    SFtpSession session;
    EXPECT_EQ(CURLE_URL_MALFORMAT, session.TestSConnect(SFtpRequest(), errorText));
    session.Cancel();
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.TestSConnect(SFtpRequest(), errorText));
    EXPECT_NE(std::string::npos, errorText.find("Cancel() was called")) << errorText;
}

TEST_F(SessionLimits, CancelEndsWhoWaitsForAConnection)
{
    serve();
    writeFile(served("a.bak"), "content");
    aimAt("/a.bak");
    SessionOptions options;
    options.maxConnections = 1;
    SFtpSession session(options);
    std::promise<void> holding;
    std::promise<void> released;
    std::thread holder([&] {
        std::string text;
        session.DownLoadTo(
            request,
            [&](const char*, std::size_t) {
                holding.set_value();
                released.get_future().wait();
                return true;
            },
            text);
    });
    holding.get_future().wait();
    std::thread cancelling([&] { session.Cancel(); });
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.TestSConnect(request, errorText));
    cancelling.join();
    released.set_value();
    holder.join();
}

// libcurl has limits of its own where it is told none.
TEST_F(SessionLimits, ZeroIsNoneForAConnectionToo)
{
    misbehave("PASS=delay:400");
    serve();
    writeFile(served("a.bak"), "content");
    SessionOptions options;
    options.connectTimeout = options.replyTimeout = options.stallTimeout = milliseconds(0);
    EXPECT_EQ(0, download(options)) << errorText;
}
