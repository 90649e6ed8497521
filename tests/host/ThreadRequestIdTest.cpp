#include <LogProxy.h>

#include <gtest/gtest.h>

#include <thread>

TEST(ThreadRequestId, IsEachThreadsOwnAndStartsAtZero)
{
    unsigned long before = 99;
    unsigned long after = 99;
    TSP_RequestID.get() = 5;
    std::thread([&before, &after] {
        before = TSP_RequestID.get();
        TSP_RequestID.get() = 6;
        after = TSP_RequestID.get();
    }).join();
    EXPECT_EQ(before, 0U);
    EXPECT_EQ(after, 6U);
    EXPECT_EQ(TSP_RequestID.get(), 5U);
}
