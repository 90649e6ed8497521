#include "support/RandomBytes.h"

#include <cstdint>
#include <random>

std::string randomBytes(std::size_t count, unsigned seed)
{
    std::mt19937_64 random(seed);
    std::string bytes;
    bytes.reserve(count + sizeof(std::uint64_t));
    while (bytes.size() < count) {
        const std::uint64_t value = random();
        bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }
    bytes.resize(count);
    return bytes;
}
