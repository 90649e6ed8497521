#include "harness/Memory.h"

#include <dlfcn.h>
#include <malloc.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct Block
{
    void* address;
    std::size_t size;
};

// Plain arrays: this code runs inside the allocator.
thread_local std::array<Block, 4096> livings;
thread_local std::size_t livingCount = 0;
thread_local const char* secretText = nullptr;
thread_local unsigned pauses = 0;
thread_local unsigned countdown = 0;
thread_local bool foreign = false;
thread_local bool functionsToo = false;
thread_local bool forGood = false;
thread_local const char* unmetFirst = nullptr;
bool begun = false; // set by the first watch, when the process is well past its start
thread_local unsigned freedSecrets = 0;

bool contains(const void* block, std::size_t size)
{
    return secretText != nullptr && memmem(block, size, secretText, std::strlen(secretText)) != nullptr;
}

// True where the countdown has come to this need.
bool runsOut(const char* who)
{
    if (!memory::watched() || countdown == 0) {
        return false;
    }
    if (countdown > 1) {
        --countdown;
        return false;
    }
    if (!forGood) {
        countdown = 0;
    }
    if (unmetFirst == nullptr) {
        unmetFirst = who;
    }
    return true;
}

void countDown(unsigned nth, bool strangely, bool withFunctions, bool lasting)
{
    countdown = nth;
    foreign = strangely;
    functionsToo = withFunctions;
    forGood = lasting;
    unmetFirst = nullptr;
}

void* allocate(std::size_t size)
{
    if (runsOut("operator new")) {
        if (foreign) {
            throw memory::ForeignException();
        }
        throw std::bad_alloc();
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (memory::watched()) {
        if (livingCount == livings.size()) {
            std::abort();
        }
        livings[livingCount++] = {block, size};
    }
    return block;
}

void forget(void* block)
{
    for (std::size_t i = 0; i < livingCount; ++i) {
        if (livings[i].address == block) {
            livings[i] = livings[--livingCount];
            return;
        }
    }
}

using Free = void (*)(void*);

// The free that this program's one stands before: the C library's, or a sanitizer's. Null while it is looked up, for
// that can free memory itself.
Free nextFree()
{
    static Free next = nullptr;
    static bool looking = false;
    if (next == nullptr && !looking) {
        looking = true;
        next = reinterpret_cast<Free>(dlsym(RTLD_NEXT, "free"));
        looking = false;
    }
    return next;
}

} // namespace

namespace memory {

Watch::Watch(const char* secret)
{
    begun = true;
    livingCount = 0;
    freedSecrets = 0;
    secretText = secret;
}

Watch::~Watch()
{
    secretText = nullptr;
    countdown = 0;
}

Pause::Pause() { ++pauses; }

Pause::~Pause() { --pauses; }

bool watched() { return secretText != nullptr && pauses == 0; }

void failAllocation(unsigned nth) { countDown(nth, false, false, false); }

void failAllocationStrangely(unsigned nth) { countDown(nth, true, false, false); }

void runShort(unsigned nth, Shortage shortage) { countDown(nth, false, true, shortage == Shortage::ForGood); }

bool unmet(const char* who) { return functionsToo && runsOut(who); }

const char* firstUnmet() { return unmetFirst; }

bool holdsSecret()
{
    for (std::size_t i = 0; i < livingCount; ++i) {
        if (contains(livings[i].address, livings[i].size)) {
            return true;
        }
    }
    return false;
}

unsigned freedWithSecret() { return freedSecrets; }

unsigned livingBlocks() { return static_cast<unsigned>(livingCount); }

} // namespace memory

void* operator new(std::size_t size) { return allocate(size); }

void* operator new[](std::size_t size) { return allocate(size); }

void operator delete(void* block) noexcept { std::free(block); }

void operator delete[](void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

void operator delete[](void* block, std::size_t /*size*/) noexcept { std::free(block); }

extern "C" void free(void* block) noexcept
{
    if (block != nullptr && begun) {
        const std::size_t size = malloc_usable_size(block);
        if (memory::watched() && contains(block, size)) {
            ++freedSecrets;
        }
        forget(block);
        // No block begins with what another left behind: the harness's own journal quotes the secret.
        std::memset(block, 0, size);
    }
    if (const Free next = nextFree()) {
        next(block);
    }
}
