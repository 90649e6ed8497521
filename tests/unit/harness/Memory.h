#ifndef UNIT_HARNESS_MEMORY_H
#define UNIT_HARNESS_MEMORY_H

#include <functional>
#include <string_view>

/// The memory of the code under test: this program replaces operator new and delete. Only what the calling thread
/// allocates while it is watched counts; the harness's own allocations are paused away.
namespace memory {

/// Sees each watched block just before it is released.
using Observer = std::function<void(std::string_view block)>;

/// Watches from construction to destruction.
class Watch
{
public:
    explicit Watch(const Observer* onRelease = nullptr);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

class Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};

/// Makes the nth watched allocation from now on fail, and all that follow it where `andAllAfter` says so.
void failAllocation(unsigned nth, bool andAllAfter = false);

/// Allocations since the watch began.
unsigned allocations();

/// How many of them have not been released.
unsigned livingBlocks();

/// Whether an allocation has been made to fail since the watch began.
bool hasFailed();

/// Whether a block begins with `text` and a zero byte.
bool isString(std::string_view block, std::string_view text);

/// Whether such a block is alive.
bool holdsString(std::string_view text);

} // namespace memory

#endif
