#include "IntegerText.h"

#include <charconv>
#include <stdexcept>

long long integerFrom(const std::string& text, long long lowest, long long highest)
{
    long long number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < lowest || number > highest) {
        throw std::runtime_error("\"" + text + "\" is not an integer from " + std::to_string(lowest) + " to " +
                                 std::to_string(highest));
    }
    return number;
}
