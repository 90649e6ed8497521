#include "output/JsonResult.h"

#include "output/ResultName.h"

#include <nlohmann/json.hpp>

std::string jsonOf(const Result& result)
{
    nlohmann::ordered_json object{{"operation", result.operation}, {"url", result.url},
                                  {"code", result.code},           {"name", nameOfResult(result.code)},
                                  {"text", result.text},           {"bytes", result.bytes},
                                  {"seconds", result.seconds},     {"attempts", result.attempts}};
    if (!result.hint.empty()) {
        object["hint"] = result.hint;
    }
    if (result.names) {
        object["names"] = *result.names;
    }
    if (result.sizeChecked) {
        object["sizeChecked"] = *result.sizeChecked;
    }
    if (!result.signal.empty()) {
        object["signal"] = result.signal;
    }
    constexpr int kOneLine = -1;
    // In ASCII alone: standard output may be a terminal, which obeys DEL and the control characters beyond it.
    constexpr bool kAscii = true;
    return object.dump(kOneLine, ' ', kAscii, nlohmann::ordered_json::error_handler_t::replace);
}
