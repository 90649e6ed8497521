#ifndef FUZZ_HARNESS_DER_H
#define FUZZ_HARNESS_DER_H

#include "harness/Dice.h"

#include <optional>
#include <string>
#include <vector>

/// Values of DER, and what stands in them.
namespace der {

struct Value
{
    unsigned char tag;
    std::string content = {};      ///< of a value without parts
    std::vector<Value> parts = {}; ///< of a sequence or a set, and of an octet string that holds values
};

/// Nothing if the bytes are not values from beginning to end.
std::optional<std::vector<Value>> parse(const std::string& bytes);

/// The bytes of these values, all of the right length.
std::string bytesOf(const std::vector<Value>& values);

/// Changes one value: its content or its tag, whether and where and how often it is there.
void mutate(std::vector<Value>& values, Dice& dice);

} // namespace der

#endif
