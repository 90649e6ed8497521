#ifndef UNIT_HARNESS_OPENSSLMEMORY_H
#define UNIT_HARNESS_OPENSSLMEMORY_H

/// OpenSSL's memory: this program gives it an allocator that counts and that can fail.
namespace opensslmemory {

/// Whether OpenSSL took the allocator.
bool installed();

/// Blocks that OpenSSL holds, its queue of errors not counted.
long livingBlocks();

/// Makes OpenSSL's nth allocation from now on fail; 0 makes none fail.
void failAllocation(unsigned nth);

/// Whether that allocation has not come yet.
bool failurePending();

} // namespace opensslmemory

#endif
