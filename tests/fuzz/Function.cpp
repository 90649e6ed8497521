// Function names, cut from what a compiler calls a function.
#include "harness/Require.h"

#include "log/GetFunctionName.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string function(reinterpret_cast<const char*>(data), size);
    const std::string name = GetFunctionName(function);
    const std::string::size_type parameters = function.find('(');
    if (parameters == std::string::npos) {
        require(name == function, "a text without parameters stays as it is");
        return 0;
    }
    require(name.size() >= 2 && name.compare(name.size() - 2, 2, "()") == 0, "a name ends in \"()\"");
    const std::string stem = name.substr(0, name.size() - 2);
    require(stem.find(' ') == std::string::npos, "a name holds no blank");
    const std::string::size_type start = parameters - stem.size();
    require(stem.size() <= parameters && function.compare(start, stem.size(), stem) == 0,
            "a name is what stands before the parameters");
    require(start == 0 || function[start - 1] == ' ', "a name is whole");
    return 0;
}
