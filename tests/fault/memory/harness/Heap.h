#ifndef MEMORY_HARNESS_HEAP_H
#define MEMORY_HARNESS_HEAP_H

#include <cstddef>
#include <unordered_map>

/// The heap of this program: malloc and its like, and operator new, stand before the C library's. As long as a Watch
/// lives, what its thread allocates is counted, can be refused, and is known until it is freed.
namespace heap {

/// Whether memory runs short once, or from then on.
enum class Shortage
{
    Once,
    ForGood
};

/// Whose allocations run short: the library's own, with those of the functions that it calls, or also those that
/// libcurl makes and causes while it performs a transfer.
enum class Whose
{
    Library,
    Everyone
};

class Watch
{
public:
    /// Refuses the nth allocation and, for good, all after it; 0 refuses none. The secret is looked for in blocks of
    /// the library that are freed.
    Watch(unsigned nth, Shortage shortage, Whose whose, const char* secret);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// Whether it has refused one.
    bool ranShort() const { return m_ranShort; }

    /// How many blocks that were allocated under the watch are still alive: the library's, and where everyone's run
    /// short, everyone's.
    unsigned livingBlocks() const;

    /// How many blocks of the library were freed with the secret in them.
    unsigned freedWithSecret() const { return m_freedWithSecret; }

    /// Forgets a block that is meant to outlive the operation.
    void leave(void* block);

    // For the functions that stand before the C library's.
    bool refuses(bool byNew);
    void noteAllocated(void* block, bool byNew);
    void noteFreed(void* block);
    bool isNoting() const { return m_noting; }

private:
    const unsigned m_nth;
    const Shortage m_shortage;
    const Whose m_whose;
    const char* const m_secret;
    unsigned m_allocations = 0;

    bool m_ranShort = false;
    bool m_noting = false;
    unsigned m_freedWithSecret = 0;
    std::unordered_map<void*, bool> m_byNew; ///< the living blocks, and whether operator new gave them
};

/// The calling thread's watch over what is allocated, and over what is freed; null where there is none.
Watch* watching();
Watch* watchingFrees();

/// Takes what the harness allocates out of the watch; what is freed is noted all the same.
class Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};

/// Tells whether the calling thread is in libcurl, for as long as it lives.
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

} // namespace heap

#endif
