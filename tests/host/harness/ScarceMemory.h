#ifndef SFTPCLIENT_TESTS_HOST_SCARCEMEMORY_H
#define SFTPCLIENT_TESTS_HOST_SCARCEMEMORY_H

/// Lets operator new fail on this thread from a certain allocation on, the first being 1, as long as this object lives.
class ScarceMemory
{
public:
    explicit ScarceMemory(long firstToFail);
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
};

#endif
