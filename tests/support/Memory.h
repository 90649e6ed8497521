#ifndef SUPPORT_MEMORY_H
#define SUPPORT_MEMORY_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

/// The memory of the code under test: a program with this in it replaces operator new and delete, and free. While a
/// Watch lives, what its thread allocates outside any Pause is counted, can be refused, and is known until it is freed.
///
/// A program that takes in Heap.cpp as well replaces malloc and the like, too; then all of its heap counts.
namespace memory {

struct Books;

/// Whether memory runs short once, or from then on.
enum class Shortage
{
    Once,
    ForGood
};

/// Whose allocations run short where all of the heap counts: the library's own, with those of the functions that it
/// calls, or also those that libcurl makes and causes while it performs a transfer.
enum class Whose
{
    Library,
    Everyone
};

/// Sees each watched block just before it is freed.
using Observer = std::function<void(std::string_view block)>;

/// Watches from construction to destruction; one at a time in each thread. The functions below speak of the thread's.
class Watch
{
public:
    /// Every block that is freed is searched for the secret.
    explicit Watch(const char* secret = nullptr);
    explicit Watch(const Observer& onRelease);
    /// For all of the heap. Only what operator new gave is searched: what libcurl keeps of a login it frees as it is.
    Watch(const char* secret, Whose whose);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    const std::unique_ptr<Books> m_books;
};

/// Excludes the harness's own allocations from the watch.
class Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};

/// Watches callbacks of the harness again, whatever Pause it is in.
class Resumption
{
public:
    Resumption();
    ~Resumption();
    Resumption(const Resumption&) = delete;
    Resumption& operator=(const Resumption&) = delete;

private:
    const unsigned m_before;
};

/// True between a Watch's ends, outside of any Pause.
bool watched();

/// Makes the nth allocation from now on, counted while watched, fail; 0 makes none fail.
void failAllocation(unsigned nth, Shortage shortage = Shortage::Once);

/// Not derived from `std::exception`.
struct ForeignException
{
};

/// The same, but with a `ForeignException`.
void failAllocationStrangely(unsigned nth);

/// Leaves the nth need from now on unmet. A need is a watched allocation, or a call of a function that allocates and
/// that the harness stands in for; such a call fails as the function does when memory runs out.
void runShort(unsigned nth, Shortage shortage);

/// For the harness: a need of the function `who`; true where it goes unmet.
bool unmet(const char* who);

/// Whose need went unmet first since one was told to, "operator new" for a plain allocation; null where none did.
const char* firstUnmet();

/// Allocations since the watch began and their bytes, and how many of those blocks are still alive.
unsigned allocations();
std::size_t bytesAllocated();
unsigned livingBlocks();

/// Whether such a block is alive.
using Test = std::function<bool(std::string_view block)>;
bool anyLiving(const Test& isOne);

/// Whether a living block holds the secret, and how many were freed with it.
bool holdsSecret();
unsigned freedWithSecret();

/// Forgets a block that is meant to outlive the operation.
void leave(void* block);

/// Marks whether the calling thread is in libcurl, as long as it lives.
class Place
{
public:
    explicit Place(bool inLibcurl);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    const bool m_before;
};

/// For the functions that replace the C library's: whether an allocation must fail, and its outcome.
bool refuses(bool byNew);
void noteMade(void* block, std::size_t size, bool byNew);
void noteFreed(void* block);

} // namespace memory

#endif
