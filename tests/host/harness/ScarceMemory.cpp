#include "harness/ScarceMemory.h"

#include <cstdlib>
#include <new>

namespace {

constexpr long kPlenty = -1;

// The number of the allocation that fails, counted from the next one; 0 when every one does.
thread_local long untilFailure = kPlenty;

thread_local std::size_t allocated = 0;

bool allocationFails()
{
    if (untilFailure > 0) {
        --untilFailure;
    }
    return untilFailure == 0;
}

} // namespace

ScarceMemory::ScarceMemory(long firstToFail) { untilFailure = firstToFail; }

ScarceMemory::~ScarceMemory() { untilFailure = kPlenty; }

std::size_t bytesAllocated() { return allocated; }

void* operator new(std::size_t size)
{
    allocated += size;
    void* const block = allocationFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
