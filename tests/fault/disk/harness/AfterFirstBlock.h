#ifndef DISK_HARNESS_AFTERFIRSTBLOCK_H
#define DISK_HARNESS_AFTERFIRSTBLOCK_H

#include <functional>

/// Lets something happen in the middle of an upload, as long as it lives: when the calling thread has read the first
/// block of the local file, and before it sends it.
class AfterFirstBlock
{
public:
    explicit AfterFirstBlock(std::function<void()> happening);
    ~AfterFirstBlock();
    AfterFirstBlock(const AfterFirstBlock&) = delete;
    AfterFirstBlock& operator=(const AfterFirstBlock&) = delete;

    bool hasHappened() const { return !m_happening; }

    /// Called by the read function.
    static void blockWasRead();

private:
    std::function<void()> m_happening;
};

#endif
