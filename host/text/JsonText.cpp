#include "JsonText.h"

#include <nlohmann/json.hpp>

std::string jsonText(const nlohmann::ordered_json& value, int indent)
{
    constexpr bool kAsciiAlone = true;
    return value.dump(indent, ' ', kAsciiAlone, nlohmann::ordered_json::error_handler_t::replace);
}
