// Malloc and its like, and operator new, for the watch of this program.

#include "harness/Heap.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

struct Allocator
{
    void* (*malloc)(std::size_t);
    void* (*calloc)(std::size_t, std::size_t);
    void* (*realloc)(void*, std::size_t);
    void (*free)(void*);
};

template <typename Function>
void find(Function*& function, const char* name)
{
    function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The allocator that this program's stands before: the C library's, or a sanitizer's.
const Allocator& next()
{
    static Allocator found = {};
    static bool looking = false;
    if (found.free == nullptr) {
        if (looking) {
            std::abort(); // looking one up must not allocate: nothing could serve it
        }
        looking = true;
        find(found.malloc, "malloc");
        find(found.calloc, "calloc");
        find(found.realloc, "realloc");
        find(found.free, "free");
        looking = false;
    }
    return found;
}

template <typename Make>
void* allocate(bool byNew, Make make)
{
    heap::Watch* const watch = heap::watching();
    if (watch == nullptr) {
        return make();
    }
    if (watch->refuses(byNew)) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = make();
    if (block != nullptr) {
        watch->noteAllocated(block, byNew);
    }
    return block;
}

void* allocateByNew(std::size_t size)
{
    void* const block = allocate(true, [size] { return next().malloc(size == 0 ? 1 : size); });
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

} // namespace

extern "C" void* malloc(std::size_t size) noexcept
{
    return allocate(false, [size] { return next().malloc(size); });
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    return allocate(false, [count, size] { return next().calloc(count, size); });
}

extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    return allocate(false, [block, size] {
        heap::Watch* const watch = heap::watchingFrees();
        if (watch != nullptr) {
            watch->noteFreed(block);
        }
        return next().realloc(block, size);
    });
}

extern "C" void free(void* block) noexcept
{
    heap::Watch* const watch = heap::watchingFrees();
    if (watch != nullptr) {
        watch->noteFreed(block);
    }
    next().free(block);
}

void* operator new(std::size_t size) { return allocateByNew(size); }

void* operator new[](std::size_t size) { return allocateByNew(size); }

void operator delete(void* block) noexcept { std::free(block); }

void operator delete[](void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

void operator delete[](void* block, std::size_t /*size*/) noexcept { std::free(block); }
