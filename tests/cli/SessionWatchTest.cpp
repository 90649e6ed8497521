#include "harness/Served.h"
#include "support/Redirection.h"

#include <operation/Interruption.h>
#include <operation/SessionWatch.h>
#include <output/MaskedLog.h>

#include <HostLog.h>

#include <csignal>
#include <cstdio>

TEST(SessionWatch, RemembersEveryReply)
{
    SessionWatch watch(nullptr);
    watch.transferBegins();
    watch.traced(CURLINFO_HEADER_IN, "220 ready\r\n");
    watch.traced(CURLINFO_HEADER_OUT, "STOR x\r\n");
    watch.traced(CURLINFO_HEADER_IN, "452-Disk\r\n");
    watch.traced(CURLINFO_HEADER_IN, "452 full\r\n");
    watch.transferBegins();
    watch.traced(CURLINFO_HEADER_OUT, "DELE x\r\n");
    watch.traced(CURLINFO_HEADER_IN, "250 gone\r\n");
    EXPECT_EQ("Disk full", watch.lastWith(452).text);
    EXPECT_EQ("STOR", watch.lastWith(452).command);
    EXPECT_EQ("gone", watch.lastWith(0).text) << "the last of all";
    EXPECT_TRUE(watch.hasReplied("DELE", 250));
    EXPECT_FALSE(watch.hasReplied("DELE", 452));
    watch.restart();
    EXPECT_EQ(0, watch.lastWith(452).code);
    EXPECT_TRUE(watch.hasSent("DELE")) << "in an earlier attempt";
    EXPECT_FALSE(watch.hasSent("RNTO"));
}

TEST(SessionWatch, CountsWhatMoves)
{
    SessionWatch watch(nullptr);
    watch.traced(CURLINFO_DATA_IN, "12345");
    watch.traced(CURLINFO_DATA_OUT, "678");
    watch.traced(CURLINFO_SSL_DATA_IN, "90");
    EXPECT_EQ(8, watch.bytes());
    watch.restart();
    EXPECT_EQ(0, watch.bytes());
}

TEST(SessionWatch, ForgetsWhatAnEndlessServerSays)
{
    SessionWatch watch(nullptr);
    for (int i = 0; i < 5000; ++i) {
        watch.traced(CURLINFO_HEADER_IN, std::to_string(200 + i % 100) + " " + std::to_string(i) + "\r\n");
    }
    EXPECT_EQ("999", watch.lastWith(299).text);
}

TEST(CancelledBySignal, ReachesTheSession)
{
    auto* const before = std::signal(SIGINT, SIG_DFL);
    for (const bool isEarly : {false, true}) {
        const Interruption interruption;
        SFtpSession session;
        if (isEarly) {
            static_cast<void>(std::raise(SIGINT));
        }
        {
            const CancelledBySignal cancelled(session);
            if (!isEarly) {
                static_cast<void>(std::raise(SIGINT));
            }
        }
        SFtpRequest request;
        request.remotePath = "ftp://127.0.0.1:1/";
        std::string text;
        EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.TestSConnect(request, text)) << isEarly;
    }
    static_cast<void>(std::signal(SIGINT, before));
}

TEST(MaskedLog, HidesThePasswordInRecords)
{
    const PasswordMask mask("me", "12");
    const Redirection output(stderr);
    {
        const MaskedLog log(mask);
        HostLog::instance().write({4, "SFtpSession", 12, "f()", 12, "a 12 \\1\\2 %31%32 b"});
        EXPECT_EQ("", output.content());
    }
    const std::string text = output.content();
    EXPECT_TRUE(holds("error SFtpSession request=12 f():12 a **** **** **** b\n", text));
}
