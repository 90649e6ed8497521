#include <LogProxy.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace {

constexpr long kNever = -1;

// Allocations of this thread that still succeed.
thread_local long allocationsLeft = kNever;

bool allocationFails()
{
    if (allocationsLeft > 0) {
        --allocationsLeft;
    }
    return allocationsLeft == 0;
}

} // namespace

void* operator new(std::size_t size)
{
    void* const block = allocationFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

namespace {

std::string writeWithMemoryFor(long allocations)
{
    auto record = std::make_unique<LogProxy>(4, "m", 0, "f()", 1);
    *record << 0 << std::string(1000, 'x');
    testing::internal::CaptureStderr();
    allocationsLeft = allocations;
    record.reset();
    allocationsLeft = kNever;
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(LostRecord, IsToldOfWhicheverAllocationFails)
{
    const std::string lost = "A log record was lost: out of memory.\n";
    const std::string written = writeWithMemoryFor(kNever);
    ASSERT_NE(written.find(" error m request=0 f():1 xxx"), std::string::npos) << written;

    long allocations = 1;
    while (writeWithMemoryFor(allocations) == lost) {
        ++allocations;
        ASSERT_LT(allocations, 1000);
    }
    EXPECT_GT(allocations, 3);
    EXPECT_NE(writeWithMemoryFor(allocations).find(" error m request=0 f():1 xxx"), std::string::npos);
}
