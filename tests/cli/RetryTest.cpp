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
        holds("\nls: 28 The server ended the connection (the server's last reply: 421 busy); trying again in 0 s\n",
              result.err));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(Served, RetriesNoMoreOftenThanRequested)
{
    serve({"GREETING=drop"});
    const ProgramResult result = run({"ls", url(), "--retry", "2", kNoDelay});
    EXPECT_TRUE(exited(56, result));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(ServedAsHost, RetriesAfterATransientErrorInTheSizeCheck)
{
    writeFile(served("file"), "contents");
    serve({"1/GREETING=drop"});
    EXPECT_TRUE(exited(0, run({"get", url("/file"), "--retry", "1", kNoDelay})));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(ServedAsHost, ResendsAPartialUpload)
{
    writeFile(local("file"), "contents");
    serve({"2/SIZE=reply:213 5"});
    const ProgramResult result = run({"put", "file", url(), "--retry", "5", kNoDelay, "--json"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(holds("put: 18 the server has 5 bytes of the 8 that were sent: ", result.err));
    EXPECT_TRUE(holds("\"attempts\":2,\"sizeChecked\":true", result.out));
    EXPECT_EQ(4U, sessions().size());
}

TEST_F(ServedAsHost, ResendsAnUploadThatCouldNotBeChecked)
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

TEST(Retry, OfASessionGoesByTheReplyToo)
{
    std::set<int> transient;
    for (int code = 0; code < CURL_LAST; ++code) {
        if (isTransient(static_cast<CURLcode>(code), 0, {})) {
            transient.insert(code);
        }
        const auto refused = static_cast<CURLcode>(code);
        const bool isNever =
            refused == CURLE_OK || refused == CURLE_LOGIN_DENIED || refused == CURLE_ABORTED_BY_CALLBACK;
        EXPECT_EQ(!isNever, isTransient(refused, 450, {})) << code;
        EXPECT_EQ(!isNever, isTransient(refused, 421, {})) << code;
        EXPECT_FALSE(isTransient(refused, 0, "CONNECT tunnel failed, response 407")) << code;
        EXPECT_EQ(transient.count(code) > 0, isTransient(refused, 550, {})) << code;
    }
    EXPECT_EQ((std::set<int>{5, 6, 7, 12, 18, 28, 35, 52, 55, 56}), transient);
}

TEST(Retry, SpreadsItsDelays)
{
    EXPECT_EQ(500ms, Retry(1, 1s, [] { return 0.0; }).next());
    EXPECT_EQ(750ms, Retry(1, 1s, [] { return 0.5; }).next());
    EXPECT_EQ(1s, Retry(1, 1s, [] { return 1.0; }).next());
    std::set<std::chrono::milliseconds> delays;
    for (int i = 0; i < 100; ++i) {
        const std::chrono::milliseconds delay = Retry(1, 1s).next();
        EXPECT_TRUE(delay >= 500ms && delay <= 1s) << delay.count();
        delays.insert(delay);
    }
    EXPECT_GT(delays.size(), 1U);
}

TEST(Retry, WaitsTwiceAsLongEachTime)
{
    const auto longest = [] { return 1.0; };
    Retry retry(4, 1500ms, longest);
    EXPECT_EQ(1500ms, retry.next());
    EXPECT_EQ(3s, retry.next());
    EXPECT_EQ(6s, retry.next());
    EXPECT_TRUE(retry.isLeft());
    EXPECT_EQ(12s, retry.next());
    EXPECT_FALSE(retry.isLeft());
    EXPECT_EQ(1h, Retry(1, 3h, longest).next());
    EXPECT_FALSE(Retry(0, 1s).isLeft());
}
