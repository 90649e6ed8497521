#ifndef CONTRACT_HARNESS_MEMORY_H
#define CONTRACT_HARNESS_MEMORY_H

/// The memory of the code under test. While it is watched, every block that the calling thread allocates outside the
/// harness is known, and every block that it frees is searched for the secret.
namespace memory {

/// Watches from construction to destruction.
class Watch
{
public:
    explicit Watch(const char* secret);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

/// Takes the harness's own allocations out of the watch.
class Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};

/// True between a Watch's ends, outside of any Pause.
bool watched();

/// Makes the nth allocation from now on, counted while watched, fail; 0 makes none fail.
void failAllocation(unsigned nth);

/// Not derived from `std::exception`.
struct ForeignException
{
};

/// The same, but with a `ForeignException`.
void failAllocationStrangely(unsigned nth);

/// Whether memory runs short once, or from then on.
enum class Shortage
{
    Once,
    ForGood
};

/// Leaves the nth need from now on unmet. A need is a watched allocation, or a call of a function that allocates and
/// that the harness stands in for; such a call fails as the function does when memory runs out.
void runShort(unsigned nth, Shortage shortage);

/// For the harness: a need of the function `who`; true where it goes unmet.
bool unmet(const char* who);

/// Whose need went unmet first since `runShort`, "operator new" for a plain allocation; null where none did.
const char* firstUnmet();

/// Whether a living block holds the secret.
bool holdsSecret();

/// How many blocks were freed with the secret in them.
unsigned freedWithSecret();

/// How many blocks allocated under the watch are still alive.
unsigned livingBlocks();

} // namespace memory

#endif
