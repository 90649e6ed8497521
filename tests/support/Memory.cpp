#include "support/Memory.h"

#include "support/NextFunction.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <unordered_map>
#include <utility>

namespace memory {

// What a watch writes down.
struct Books
{
    struct Block
    {
        std::size_t size;
        bool byNew;
    };

    bool holdsSecret(const void* block, std::size_t size) const
    {
        return secret != nullptr && memmem(block, size, secret, std::strlen(secret)) != nullptr;
    }

    const char* secret = nullptr;
    std::optional<Whose> whose; // where all of the heap counts
    Observer onRelease;
    std::unordered_map<void*, Block> living;
    unsigned allocations = 0;
    std::size_t bytesAllocated = 0;
    unsigned freedWithSecret = 0;
};

namespace {

// Plain data: this is read inside the allocator.
thread_local Books* current = nullptr;
thread_local bool writing = false; // the watch's own notes, which do not count
thread_local unsigned pauses = 0;
thread_local bool inLibcurl = false;
thread_local unsigned countdown = 0;
thread_local Shortage lasting = Shortage::Once;
thread_local bool foreign = false;
thread_local bool functionsToo = false;
thread_local const char* unmetFirst = nullptr;
std::atomic<bool> begun{false}; // set by the first watch, when the process is well past its start

struct Writing
{
    Writing() { writing = true; }
    ~Writing() { writing = false; }
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
};

// True where the countdown has come to this need.
bool runsOut(const char* who)
{
    if (!watched() || countdown == 0) {
        return false;
    }
    if (countdown > 1) {
        --countdown;
        return false;
    }
    if (lasting == Shortage::Once) {
        countdown = 0;
    }
    if (unmetFirst == nullptr) {
        unmetFirst = who;
    }
    return true;
}

void countDown(unsigned nth, Shortage shortage, bool strangely, bool withFunctions)
{
    countdown = nth;
    lasting = shortage;
    foreign = strangely;
    functionsToo = withFunctions;
    unmetFirst = nullptr;
}

} // namespace

Watch::Watch(const char* secret) : m_books(new Books)
{
    m_books->secret = secret;
    begun = true;
    failAllocation(0);
    current = m_books.get();
}

Watch::Watch(const Observer& onRelease) : Watch() { m_books->onRelease = onRelease; }

Watch::Watch(const char* secret, Whose whose) : Watch(secret) { m_books->whose = whose; }

Watch::~Watch()
{
    current = nullptr;
    countdown = 0;
}

Pause::Pause() { ++pauses; }

Pause::~Pause() { --pauses; }

Resumption::Resumption() : m_before(std::exchange(pauses, 0)) {}

Resumption::~Resumption() { pauses = m_before; }

bool watched() { return current != nullptr && pauses == 0 && !writing; }

void failAllocation(unsigned nth, Shortage shortage) { countDown(nth, shortage, false, false); }

void failAllocationStrangely(unsigned nth) { countDown(nth, Shortage::Once, true, false); }

void runShort(unsigned nth, Shortage shortage) { countDown(nth, shortage, false, true); }

bool unmet(const char* who) { return functionsToo && runsOut(who); }

const char* firstUnmet() { return unmetFirst; }

unsigned allocations() { return current->allocations; }

std::size_t bytesAllocated() { return current->bytesAllocated; }

unsigned livingBlocks() { return static_cast<unsigned>(current->living.size()); }

bool anyLiving(const Test& isOne)
{
    return current != nullptr && std::any_of(current->living.begin(), current->living.end(), [&](const auto& each) {
               return isOne({static_cast<const char*>(each.first), each.second.size});
           });
}

bool holdsSecret()
{
    return anyLiving([](std::string_view block) { return current->holdsSecret(block.data(), block.size()); });
}

unsigned freedWithSecret() { return current == nullptr ? 0 : current->freedWithSecret; }

void leave(void* block)
{
    const Writing own;
    current->living.erase(block);
}

Place::Place(bool now) : m_before(std::exchange(inLibcurl, now)) {}

Place::~Place() { inLibcurl = m_before; }

bool refuses(bool byNew)
{
    // Neither libcurl nor OpenSSL is written in C++: operator new is the library's, also in the hook.
    if (watched() && current->whose == Whose::Library && inLibcurl && !byNew) {
        return false;
    }
    return runsOut(byNew ? "operator new" : "malloc");
}

void noteMade(void* block, std::size_t size, bool byNew)
{
    if (block != nullptr && watched()) {
        const Writing own;
        ++current->allocations;
        current->bytesAllocated += size;
        current->living[block] = {size, byNew};
    }
}

void noteFreed(void* block)
{
    if (current == nullptr || writing) {
        return;
    }
    const Writing own;
    const auto known = current->living.find(block);
    const bool isKnown = known != current->living.end();
    const bool searched = pauses == 0 && (!current->whose || (isKnown && known->second.byNew));
    if (searched && current->holdsSecret(block, malloc_usable_size(block))) {
        ++current->freedWithSecret;
    }
    if (isKnown) {
        if (current->onRelease) {
            current->onRelease({static_cast<const char*>(block), known->second.size});
        }
        current->living.erase(known);
    }
}

namespace {

void* allocate(std::size_t size) noexcept
{
    if (refuses(true)) {
        return nullptr;
    }
    void* block = nullptr;
    {
        const bool before = std::exchange(writing, true); // where malloc is watched as well, one of the two counts
        block = std::malloc(size == 0 ? 1 : size);
        writing = before;
    }
    noteMade(block, size, true);
    return block;
}

void* allocateOrThrow(std::size_t size)
{
    void* const block = allocate(size);
    if (block != nullptr) {
        return block;
    }
    if (foreign) {
        throw ForeignException();
    }
    throw std::bad_alloc();
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
        next = nextFunction<void(void*)>("free");
        looking = false;
    }
    return next;
}

} // namespace
} // namespace memory

void* operator new(std::size_t size) { return memory::allocateOrThrow(size); }

void* operator new[](std::size_t size) { return memory::allocateOrThrow(size); }

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return memory::allocate(size); }

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return memory::allocate(size); }

void operator delete(void* block) noexcept { std::free(block); }

void operator delete[](void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

void operator delete[](void* block, std::size_t /*size*/) noexcept { std::free(block); }

void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { std::free(block); }

void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { std::free(block); }

extern "C" void free(void* block) noexcept
{
    if (block != nullptr && memory::begun) {
        memory::noteFreed(block);
        // No block begins with what another left behind: the harness's own journal quotes the secret.
        std::memset(block, 0, malloc_usable_size(block));
    }
    if (const memory::Free next = memory::nextFree()) {
        next(block);
    }
}
