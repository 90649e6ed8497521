#include "output/Json.h"

std::string dumped(const nlohmann::ordered_json& object, int indent)
{
    constexpr bool kAscii = true;
    return object.dump(indent, ' ', kAscii, nlohmann::ordered_json::error_handler_t::replace);
}
