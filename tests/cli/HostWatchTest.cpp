#include <operation/HostWatch.h>

#include <gtest/gtest.h>

namespace {

constexpr std::chrono::seconds kConnect(7);

} // namespace

TEST(HostWatch, NamesTheLimitThatEndedATransfer)
{
    HostWatch watch(TimeLimits{kConnect}, nullptr, nullptr);
    EXPECT_EQ(kConnect, watch.begins());
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, watch.ended(CURLE_OPERATION_TIMEDOUT, {}));
    EXPECT_EQ("connection and login did not finish within 7 s (--connect-time)", watch.limitReached());

    watch.begins();
    watch.connected();
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, watch.ended(CURLE_OPERATION_TIMEDOUT, {}));
    EXPECT_EQ("the data connection was not made within 7 s (--connect-time)", watch.limitReached());

    watch.begins();
    EXPECT_EQ(CURLE_OK, watch.ended(CURLE_OK, {}));
    EXPECT_EQ("", watch.limitReached());
}

TEST(HostWatch, DoesNotMistakeARefusalForALimit)
{
    HostWatch watch(TimeLimits{kConnect}, nullptr, nullptr);
    watch.begins();
    watch.traced(CURLINFO_HEADER_IN, "421 too many users\r\n");
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, watch.ended(CURLE_OPERATION_TIMEDOUT, {}));
    EXPECT_EQ("", watch.limitReached());
    EXPECT_EQ(1U, watch.transfers());
    watch.restart();
    EXPECT_EQ(0U, watch.transfers());
}
