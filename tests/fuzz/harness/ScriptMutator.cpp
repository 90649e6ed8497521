// How libFuzzer makes new inputs of a target that plays a script: from the grammar, and from bytes.
#include "harness/ScriptMutator.h"

#include "harness/Grammar.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t most);

namespace {

std::string textOf(const uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

char choice(Dice& dice) { return static_cast<char>((dice.onceIn(8) ? 'p' : '0') + dice.below(16)); }

std::string changed(std::string input, Dice& dice)
{
    while (input.size() < kChoices) {
        input += choice(dice);
    }
    if (dice.onceIn(5)) {
        input[dice.below(kChoices)] = choice(dice);
        if (dice.onceIn(2)) {
            return input;
        }
    }
    Script script = dice.onceIn(8) ? grammar::script(dice) : Script(input.substr(kChoices));
    for (std::size_t left = 1 + dice.below(3); left > 0; --left) {
        grammar::mutate(script, dice);
    }
    return input.substr(0, kChoices) + script.text();
}

// 0 if it is too long.
std::size_t give(const std::string& input, uint8_t* data, std::size_t most)
{
    if (input.size() > most) {
        return 0;
    }
    std::memcpy(data, input.data(), input.size());
    return input.size();
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t most, unsigned seed)
{
    Dice dice(seed);
    const std::size_t made = dice.onceIn(4) ? 0 : give(changed(textOf(data, size), dice), data, most);
    return made != 0 ? made : LLVMFuzzerMutate(data, size, most);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const uint8_t* first, std::size_t firstSize, const uint8_t* second,
                                                 std::size_t secondSize, uint8_t* out, std::size_t most, unsigned seed)
{
    if (firstSize < kChoices || secondSize < kChoices) {
        return 0;
    }
    Dice dice(seed);
    const std::string one = textOf(first, firstSize);
    const std::string other = textOf(second, secondSize);
    return give(one.substr(0, kChoices) +
                    grammar::crossed(Script(one.substr(kChoices)), Script(other.substr(kChoices)), dice).text(),
                out, most);
}
