#include <LogProxy.h>
#include <RequestIdScope.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

TEST(ThreadRequestId, IsPerThreadAndStartsAtZero)
{
    unsigned long before = 99;
    unsigned long after = 99;
    TSP_RequestID.get() = 5;
    std::thread([&before, &after] {
        before = TSP_RequestID.get();
        TSP_RequestID.get() = 6;
        after = TSP_RequestID.get();
    }).join();
    EXPECT_EQ(0U, before);
    EXPECT_EQ(6U, after);
    EXPECT_EQ(5U, TSP_RequestID.get());
    TSP_RequestID.get() = 0;
}

TEST(RequestIdScope, LastsAsLongAsItsObject)
{
    {
        const RequestIdScope outer(18446744073709551615UL);
        EXPECT_EQ(18446744073709551615UL, TSP_RequestID.get());
        {
            const RequestIdScope inner(7);
            EXPECT_EQ(7U, TSP_RequestID.get());
        }
        EXPECT_EQ(18446744073709551615UL, TSP_RequestID.get());
    }
    EXPECT_EQ(0U, TSP_RequestID.get());
}

TEST(RequestIdScope, EndsWithAnException)
{
    try {
        const RequestIdScope scope(7);
        throw std::runtime_error("on the way out");
    } catch (const std::runtime_error&) {
        EXPECT_EQ(0U, TSP_RequestID.get());
    }
}

TEST(RequestIdScope, BelongsToItsThread)
{
    const RequestIdScope here(1);
    std::thread([] {
        const RequestIdScope there(2);
        EXPECT_EQ(2U, TSP_RequestID.get());
    }).join();
    EXPECT_EQ(1U, TSP_RequestID.get());
}
