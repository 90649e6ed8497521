#include "harness/Served.h"

#include <operation/Retry.h>

#include <set>

using namespace std::chrono_literals;

namespace {

constexpr char kNoDelay[] = "--retry-delay=0";

} // namespace

TEST_F(Served, TriesAgainUntilTheFaultHasPassed)
{
    serve({"1/GREETING=drop", "2/GREETING=reply:421 busy"});
    const CommandResult result = run({"ls", url(), "--retry", "5", kNoDelay});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("\nls: 56 Failure when receiving data from the peer; trying again in 0 s\n"),
              std::string::npos)
        << result.err;
    EXPECT_NE(
        result.err.find("\nls: 28 Timeout was reached (the server's last reply: 421 busy); trying again in 0 s\n"),
        std::string::npos);
    EXPECT_EQ(sessions().size(), 3U);
}

TEST_F(Served, TriesAgainNoMoreOftenThanItWasTold)
{
    serve({"GREETING=drop"});
    const CommandResult result = run({"ls", url(), "--retry", "2", kNoDelay});
    EXPECT_EQ(result.status, 56);
    EXPECT_EQ(sessions().size(), 3U);
}

TEST_F(Served, TriesAgainAfterAFaultOfTheSizeCheck)
{
    writeFile(served("file"), "contents");
    serve({"1/GREETING=drop"});
    EXPECT_EQ(run({"get", url("/file"), "--retry", "1", kNoDelay}).status, 0);
    EXPECT_EQ(sessions().size(), 3U);
}

TEST_F(Served, SendsAgainWhatArrivedInPart)
{
    writeFile(local("file"), "contents");
    serve({"2/SIZE=reply:213 5"});
    const CommandResult result = run({"put", "file", url(), "--retry", "5", kNoDelay, "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.err.find("put: 18 the server has 5 bytes of the 8 that were sent: "), std::string::npos);
    EXPECT_NE(result.out.find("\"attempts\":2,\"sizeChecked\":true"), std::string::npos) << result.out;
    EXPECT_EQ(sessions().size(), 4U);
}

TEST_F(Served, SendsAgainWhatCouldNotBeChecked)
{
    writeFile(local("file"), "contents");
    serve({"2/SIZE=drop"});
    const CommandResult result = run({"put", "file", url(), "--retry", "5", kNoDelay});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(
        result.err.find("put: 56 all was sent, but the check of its size on the server failed: Failure when "
                        "receiving data from the peer (the server's last reply: 200 type set); trying again in 0 s\n"),
        std::string::npos)
        << result.err;
    EXPECT_EQ(sessions().size(), 4U);
}

TEST_F(Served, DoesNotRepeatARefusal)
{
    serve();
    EXPECT_EQ(run({"ls", url(), "--retry", "5", kNoDelay}, {{"SFTPCLIENT_PASSWORD", "wrong"}}).status, 67);
    EXPECT_EQ(run({"ls", url("/missing/"), "--retry", "5", kNoDelay}).status, 78);
    EXPECT_EQ(sessions().size(), 2U);
}

TEST(Retry, IsForPassingFaultsAlone)
{
    std::set<int> passing;
    for (int code = 0; code < CURL_LAST; ++code) {
        if (isPassingFault(static_cast<CURLcode>(code))) {
            passing.insert(code);
        }
    }
    EXPECT_EQ(passing, (std::set<int>{7, 28, 35, 52, 55, 56}));
}

TEST(Retry, WaitsTwiceAsLongEachTime)
{
    Retry retry(4, 1500ms);
    EXPECT_EQ(retry.next(), 1500ms);
    EXPECT_EQ(retry.next(), 3s);
    EXPECT_EQ(retry.next(), 6s);
    EXPECT_TRUE(retry.isLeft());
    EXPECT_EQ(retry.next(), 12s);
    EXPECT_FALSE(retry.isLeft());
    EXPECT_EQ(Retry(1, 3h).next(), 1h);
    EXPECT_FALSE(Retry(0, 1s).isLeft());
}
