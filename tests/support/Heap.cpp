// malloc and the like, for a program whose whole heap is watched.

#include "support/Memory.h"
#include "support/NextFunction.h"

#include <cerrno>
#include <cstddef>

namespace {

template <typename Make>
void* allocate(std::size_t size, const Make& make)
{
    if (memory::refuses(false)) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = make();
    memory::noteMade(block, size, false);
    return block;
}

} // namespace

extern "C" void* malloc(std::size_t size) noexcept
{
    static auto* const real = nextFunction<void*(std::size_t)>("malloc");
    return allocate(size, [size] { return real(size); });
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    static auto* const real = nextFunction<void*(std::size_t, std::size_t)>("calloc");
    return allocate(count * size, [count, size] { return real(count, size); });
}

extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    static auto* const real = nextFunction<void*(void*, std::size_t)>("realloc");
    return allocate(size, [block, size] {
        memory::noteFreed(block);
        return real(block, size);
    });
}
