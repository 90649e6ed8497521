#include "harness/Served.h"

#include <operation/Retry.h>

#include <set>

using namespace std::chrono_literals;

namespace {

constexpr char kNoDelay[] = "--retry-delay=0";

} // namespace

TEST_F(Served, RetriesUntilTheErrorHasPassed)
{
    serve({"1/GREETING=drop", "2/GREETING=reply:421 busy"});
    const ProgramResult result = run({"ls", url(), "--retry", "5", kNoDelay});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(holds("\nls: 56 Failure when receiving data from the peer; trying again in 0 s\n", result.err));
    EXPECT_TRUE(
        holds("\nls: 28 Timeout was reached (the server's last reply: 421 busy); trying again in 0 s\n", result.err));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(Served, RetriesNoMoreOftenThanRequested)
{
    serve({"GREETING=drop"});
    const ProgramResult result = run({"ls", url(), "--retry", "2", kNoDelay});
    EXPECT_TRUE(exited(56, result));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(Served, RetriesAfterATransientErrorInTheSizeCheck)
{
    writeFile(served("file"), "contents");
    serve({"1/GREETING=drop"});
    EXPECT_TRUE(exited(0, run({"get", url("/file"), "--retry", "1", kNoDelay})));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(Served, ResendsAPartialUpload)
{
    writeFile(local("file"), "contents");
    serve({"2/SIZE=reply:213 5"});
    const ProgramResult result = run({"put", "file", url(), "--retry", "5", kNoDelay, "--json"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(holds("put: 18 the server has 5 bytes of the 8 that were sent: ", result.err));
    EXPECT_TRUE(holds("\"attempts\":2,\"sizeChecked\":true", result.out));
    EXPECT_EQ(4U, sessions().size());
}

TEST_F(Served, ResendsAnUploadThatCouldNotBeChecked)
{
    writeFile(local("file"), "contents");
    serve({"2/SIZE=drop"});
    const ProgramResult result = run({"put", "file", url(), "--retry", "5", kNoDelay});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(holds("put: 56 all was sent, but the check of its size on the server failed: Failure when "
                      "receiving data from the peer (the server's last reply: 200 type set); trying again in 0 s\n",
                      result.err));
    EXPECT_EQ(4U, sessions().size());
}

TEST_F(Served, DoesNotRetryARefusal)
{
    serve();
    EXPECT_TRUE(exited(67, run({"ls", url(), "--retry", "5", kNoDelay}, {{"SFTPCLIENT_PASSWORD", "wrong"}})));
    EXPECT_TRUE(exited(78, run({"ls", url("/missing/"), "--retry", "5", kNoDelay})));
    EXPECT_EQ(2U, sessions().size());
}

TEST(Retry, IsOnlyForTransientErrors)
{
    std::set<int> passing;
    for (int code = 0; code < CURL_LAST; ++code) {
        if (isPassingFault(static_cast<CURLcode>(code))) {
            passing.insert(code);
        }
    }
    EXPECT_EQ((std::set<int>{7, 28, 35, 52, 55, 56}), passing);
}

TEST(Retry, WaitsTwiceAsLongEachTime)
{
    Retry retry(4, 1500ms);
    EXPECT_EQ(1500ms, retry.next());
    EXPECT_EQ(3s, retry.next());
    EXPECT_EQ(6s, retry.next());
    EXPECT_TRUE(retry.isLeft());
    EXPECT_EQ(12s, retry.next());
    EXPECT_FALSE(retry.isLeft());
    EXPECT_EQ(1h, Retry(1, 3h).next());
    EXPECT_FALSE(Retry(0, 1s).isLeft());
}
