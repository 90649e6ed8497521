#ifndef SFTPCLIENT_TESTS_HOST_SCARCEMEMORY_H
#define SFTPCLIENT_TESTS_HOST_SCARCEMEMORY_H

#include <cstddef>

/// Lets operator new fail on this thread from a certain allocation on, the first being 1, as long as this object lives.
class ScarceMemory
{
public:
    explicit ScarceMemory(long firstToFail);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
};

/// How much operator new has given this thread so far, whatever was given back meanwhile.
std::size_t bytesAllocated();

#endif
