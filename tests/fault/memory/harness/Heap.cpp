#include "harness/Heap.h"

#include <malloc.h>

#include <cstring>

namespace heap {

namespace {

// Plain data: this is read inside the allocator.
thread_local Watch* current = nullptr;
thread_local unsigned pauses = 0;
thread_local bool libcurlsTurn = false;

} // namespace

Watch::Watch(unsigned nth, Shortage shortage, Whose whose, const char* secret)
    : m_nth(nth), m_shortage(shortage), m_whose(whose), m_secret(secret)
{
    current = this;
}

Watch::~Watch() { current = nullptr; }

bool Watch::refuses(bool byNew)
{
    // Neither libcurl nor OpenSSL is written in C++: operator new is the library's, also in the hook.
    if (m_whose == Whose::Library && libcurlsTurn && !byNew) {
        return false;
    }
    ++m_allocations;
    const bool refused = m_allocations == m_nth || (m_ranShort && m_shortage == Shortage::ForGood);
    m_ranShort = m_ranShort || refused;
    return refused;
}

void Watch::noteAllocated(void* block, bool byNew)
{
    m_noting = true;
    m_byNew[block] = byNew;
    m_noting = false;
}

void Watch::noteFreed(void* block)
{
    const auto known = m_byNew.find(block);
    if (known == m_byNew.end()) {
        return;
    }
    m_noting = true;
    // What libcurl keeps of a login it frees as it is.
    if (known->second && memmem(block, malloc_usable_size(block), m_secret, std::strlen(m_secret)) != nullptr) {
        ++m_freedWithSecret;
    }
    m_byNew.erase(known);
    m_noting = false;
}

void Watch::leave(void* block)
{
    m_noting = true;
    m_byNew.erase(block);
    m_noting = false;
}

unsigned Watch::livingBlocks() const { return static_cast<unsigned>(m_byNew.size()); }

Watch* watching() { return pauses == 0 ? watchingFrees() : nullptr; }

Watch* watchingFrees() { return current != nullptr && !current->isNoting() ? current : nullptr; }

Pause::Pause() { ++pauses; }

Pause::~Pause() { --pauses; }

Place::Place(bool inLibcurl) : m_before(libcurlsTurn) { libcurlsTurn = inLibcurl; }

Place::~Place() { libcurlsTurn = m_before; }

} // namespace heap
