#include "harness/AfterFirstBlock.h"

#include "support/NextFunction.h"

#include <cstdio>
#include <utility>

namespace {

thread_local AfterFirstBlock* current = nullptr;

} // namespace

AfterFirstBlock::AfterFirstBlock(std::function<void()> happening) : m_happening(std::move(happening))
{
    current = this;
}

AfterFirstBlock::~AfterFirstBlock() { current = nullptr; }

void AfterFirstBlock::blockWasRead()
{
    AfterFirstBlock* const waiting = std::exchange(current, nullptr);
    if (waiting != nullptr) {
        std::exchange(waiting->m_happening, nullptr)();
    }
}

// libcurl reads the file through this function of the C library, which this one replaces.
extern "C" size_t fread(void* buffer, size_t size, size_t count, FILE* stream)
{
    static auto* const next = nextFunction<size_t(void*, size_t, size_t, FILE*)>("fread");
    const size_t read = next(buffer, size, count, stream);
    AfterFirstBlock::blockWasRead();
    return read;
}
