#include "harness/Memory.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct Block
{
    void* address;
    std::size_t size;
};

// Plain data: this code runs inside the allocator.
thread_local bool watching = false;
thread_local unsigned pauses = 0;
thread_local const memory::Observer* observer = nullptr;
thread_local std::array<Block, 1024> blocks;
thread_local std::size_t blockCount = 0;
thread_local unsigned allocationCount = 0;
thread_local unsigned failing = 0;
thread_local bool failingAfter = false;
thread_local bool failed = false;

bool watched() { return watching && pauses == 0; }

bool refused()
{
    if (!watched() || failing == 0) {
        return false;
    }
    if (failing > 1) {
        --failing;
        return false;
    }
    if (!failingAfter) {
        failing = 0;
    }
    failed = true;
    return true;
}

void* allocate(std::size_t size)
{
    void* address = refused() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (address != nullptr && watched()) {
        if (blockCount == blocks.size()) {
            std::abort();
        }
        ++allocationCount;
        blocks[blockCount++] = {address, size};
    }
    return address;
}

void* allocateOrThrow(std::size_t size)
{
    void* address = allocate(size);
    if (address == nullptr) {
        throw std::bad_alloc();
    }
    return address;
}

std::string_view contentOf(const Block& block) { return {static_cast<const char*>(block.address), block.size}; }

void release(void* address) noexcept
{
    for (std::size_t i = 0; watching && i < blockCount; ++i) {
        if (blocks[i].address == address) {
            const Block block = blocks[i];
            blocks[i] = blocks[--blockCount];
            if (observer != nullptr) {
                const memory::Pause pause;
                (*observer)(contentOf(block));
            }
            break;
        }
    }
    std::free(address);
}

} // namespace

namespace memory {

Watch::Watch(const Observer* onRelease)
{
    blockCount = 0;
    allocationCount = 0;
    failing = 0;
    failed = false;
    observer = onRelease;
    watching = true;
}

Watch::~Watch()
{
    watching = false;
    observer = nullptr;
}

Pause::Pause() { ++pauses; }

Pause::~Pause() { --pauses; }

void failAllocation(unsigned nth, bool andAllAfter)
{
    failing = nth;
    failingAfter = andAllAfter;
}

unsigned allocations() { return allocationCount; }

unsigned livingBlocks() { return static_cast<unsigned>(blockCount); }

bool hasFailed() { return failed; }

bool isString(std::string_view block, std::string_view text)
{
    return block.size() > text.size() && block.substr(0, text.size()) == text && block[text.size()] == '\0';
}

bool holdsString(std::string_view text)
{
    for (std::size_t i = 0; i < blockCount; ++i) {
        if (isString(contentOf(blocks[i]), text)) {
            return true;
        }
    }
    return false;
}

} // namespace memory

void* operator new(std::size_t size) { return allocateOrThrow(size); }

void* operator new[](std::size_t size) { return allocateOrThrow(size); }

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return allocate(size); }

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return allocate(size); }

void operator delete(void* address) noexcept { release(address); }

void operator delete[](void* address) noexcept { release(address); }

void operator delete(void* address, std::size_t /*size*/) noexcept { release(address); }

void operator delete[](void* address, std::size_t /*size*/) noexcept { release(address); }

void operator delete(void* address, const std::nothrow_t& /*tag*/) noexcept { release(address); }

void operator delete[](void* address, const std::nothrow_t& /*tag*/) noexcept { release(address); }
