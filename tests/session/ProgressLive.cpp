// How far a call is, and what stops it from within or from a signal handler.
#include "SessionLive.h"

#include <csignal>
#include <thread>

namespace {

constexpr std::size_t kBytes = 300000;

SFtpSession* cancelled = nullptr;

void cancelIt(int /*signal*/) { cancelled->Cancel(); }

class SessionProgress : public SessionLive
{
protected:
    SessionProgress()
    {
        writeFile(served("a.bak"), std::string(kBytes, 'x'));
        writeFile(local("file"), std::string(kBytes, 'x'));
        options.progress = [this](const TransferProgress& now) { reports.push_back(now); };
    }

    void expectReportsUpTo(std::int64_t bytes) const
    {
        ASSERT_FALSE(reports.empty());
        for (std::size_t i = 1; i < reports.size(); ++i) {
            EXPECT_LE(reports[i - 1].bytes, reports[i].bytes) << i;
        }
        EXPECT_EQ(bytes, reports.back().bytes);
        EXPECT_EQ(bytes, reports.back().total);
        EXPECT_EQ(TransferPhase::Finishing, reports.back().phase);
    }

    SessionOptions options;
    std::vector<TransferProgress> reports;
};

} // namespace

TEST_F(SessionProgress, IsToldOfBothDirectionsUpToTheEnd)
{
    serve();
    aimAt("/a.bak");
    SFtpSession session(options);
    request.localPath = local("got");
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    expectReportsUpTo(kBytes);
    reports.clear();
    request.localPath = local("file");
    EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    expectReportsUpTo(kBytes);
}

TEST_F(SessionProgress, ComesAtMostTenTimesASecond)
{
    misbehave("DATA=slow:600000"); // half a second
    serve();
    aimAt("/a.bak");
    const auto begin = std::chrono::steady_clock::now();
    SFtpSession session(options);
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    // One at once, and one at the end.
    EXPECT_LE(static_cast<double>(reports.size()), 10 * took.count() + 2);
    EXPECT_LE(3U, reports.size());
}

TEST_F(SessionProgress, TimeThatTheCallerTakesIsNotTheServers)
{
    misbehave("DATA=slow:600000"); // half a second
    serve();
    aimAt("/a.bak");
    options.stallTimeout = std::chrono::milliseconds(500);
    options.replyTimeout = std::chrono::milliseconds(500);
    options.progress = [slept = false](const TransferProgress& now) mutable {
        if (now.phase == TransferPhase::Transferring && !slept) {
            slept = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
        }
    };
    SFtpSession session(options);
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
}

TEST_F(SessionProgress, WhatItThrowsEndsTheCallAndPasses)
{
    struct Own
    {
    };
    options.progress = [](const TransferProgress&) { throw Own(); };
    serve();
    aimAt("/a.bak");
    SFtpSession session(options);
    EXPECT_THROW(session.UploadFileToSFtpServer(request, errorText), Own);
    writeFile(local("file"), "before");
    EXPECT_THROW(session.DownLoadSFtpFile(request, errorText), Own);
    EXPECT_EQ("before", contentOf(local("file")));
}

TEST_F(SessionProgress, CancelWorksInASignalHandler)
{
    misbehave("DATA=stall-after:1000");
    serve();
    aimAt("/a.bak");
    SFtpSession session(options);
    cancelled = &session;
    const auto before = std::signal(SIGUSR1, cancelIt);
    EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.DownLoadTo(
                                             request,
                                             [](const char*, std::size_t) {
                                                 static_cast<void>(raise(SIGUSR1));
                                                 return true;
                                             },
                                             errorText));
    std::signal(SIGUSR1, before);
    EXPECT_EQ(
        "Operation was aborted by an application callback: Cancel() was called (the server's last reply: 150 data "
        "follows)",
        errorText);
    session.ClearCancel();
    aimAt("/");
    EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
}

TEST_F(SessionProgress, ARateIsALimit)
{
    // Far more than libcurl reads at once.
    writeFile(served("a.bak"), std::string(10 * kBytes, 'x'));
    options.receiveRate = 3 * kBytes;
    serve();
    aimAt("/a.bak");
    SFtpSession session(options);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_TRUE(std::chrono::steady_clock::now() - begin >= std::chrono::seconds(1))
        << "without a limit it takes 50 ms";
}

TEST_F(SessionProgress, ARateIsALimitForASmallFileToo)
{
    options.receiveRate = kBytes * 2;
    serve();
    aimAt("/a.bak");
    SFtpSession session(options);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_EQ(0, session.DownLoadSFtpFile(request, errorText)) << errorText;
    EXPECT_TRUE(std::chrono::steady_clock::now() - begin >= std::chrono::seconds(1));
}

TEST_F(SessionProgress, ARateIsALimitForASmallUploadTooAndNoStall)
{
    constexpr std::size_t kSmall = 30000;
    options.sendRate = kSmall / 2;
    options.stallTimeout = std::chrono::milliseconds(700);
    serve();
    writeFile(local("file"), std::string(kSmall, 'x'));
    aimAt("/b.bak");
    SFtpSession session(options);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(0, session.UploadFileToSFtpServer(request, errorText)) << errorText;
    EXPECT_TRUE(std::chrono::steady_clock::now() - begin >= std::chrono::seconds(1));
}
