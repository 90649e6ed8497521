#include "harness/OpenSslMemory.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> living{0};
std::atomic<unsigned> failing{0};

bool refused() { return failing != 0 && --failing == 0; }

void* allocate(std::size_t size, const char* /*file*/, int /*line*/)
{
    if (refused()) {
        return nullptr;
    }
    ++living;
    return std::malloc(size == 0 ? 1 : size);
}

void release(void* block, const char* /*file*/, int /*line*/)
{
    if (block != nullptr) {
        --living;
        std::free(block);
    }
}

void* reallocate(void* block, std::size_t size, const char* file, int line)
{
    if (block == nullptr) {
        return allocate(size, file, line);
    }
    if (size == 0) {
        release(block, file, line);
        return nullptr;
    }
    return refused() ? nullptr : std::realloc(block, size);
}

// OpenSSL takes an allocator only before its first allocation.
const bool taken = CRYPTO_set_mem_functions(allocate, reallocate, release) == 1;

} // namespace

namespace opensslmemory {

bool installed() { return taken; }

long livingBlocks()
{
    ERR_clear_error();
    return living;
}

void failAllocation(unsigned nth) { failing = nth; }

bool failurePending() { return failing != 0; }

} // namespace opensslmemory
