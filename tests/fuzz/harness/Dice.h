#ifndef FUZZ_HARNESS_DICE_H
#define FUZZ_HARNESS_DICE_H

#include <cstddef>
#include <random>
#include <string>
#include <vector>

/// Choices that follow from a seed.
class Dice
{
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}

    /// 0 to `count` - 1; 0 if `count` is 0.
    std::size_t below(std::size_t count) { return count == 0 ? 0 : m_engine() % count; }
    /// True once in so many times.
    bool onceIn(std::size_t times) { return below(times) == 0; }

    template <typename Item>
    const Item& among(const std::vector<Item>& items)
    {
        return items[below(items.size())];
    }

    std::string bytes(std::size_t count)
    {
        std::string bytes;
        while (bytes.size() < count) {
            bytes += static_cast<char>(below(256));
        }
        return bytes;
    }

private:
    std::mt19937 m_engine;
};

#endif
