#include "harness/ScarceMemory.h"

#include <LogProxy.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::string writeWithFailureFrom(long allocation)
{
    auto record = std::make_unique<LogProxy>(4, "m", 0, "f()", 1);
    *record << 0 << std::string(1000, 'x');
    testing::internal::CaptureStderr();
    {
        const ScarceMemory memory(allocation);
        record.reset();
    }
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(LostRecord, IsToldOfWhicheverAllocationFails)
{
    const std::string lost = "A log record was lost: out of memory.\n";
    const std::string written = writeWithFailureFrom(1000);
    ASSERT_NE(written.find(" error m request=0 f():1 xxx"), std::string::npos) << written;

    long allocation = 1;
    while (writeWithFailureFrom(allocation) == lost) {
        ++allocation;
        ASSERT_LT(allocation, 1000);
    }
    EXPECT_GT(allocation, 3);
    EXPECT_NE(writeWithFailureFrom(allocation).find(" error m request=0 f():1 xxx"), std::string::npos);
}
