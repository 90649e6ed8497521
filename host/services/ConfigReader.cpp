#include <ConfigReader.h>

#include "HostConfiguration.h"
#include "IntegerText.h"
#include "OtherServices.h"
#include "ReportFailure.h"

#include <exception>
#include <limits>
#include <optional>

namespace {

// What cannot be understood must not switch a check off.
constexpr int kSwitchedOn = 1;

int integerIn(const std::string& text)
{
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(integerFrom(text, Limits::min(), Limits::max()));
}

[[maybe_unused]] const bool anotherIsUsed = tellOfOtherServices();

} // namespace

int ConfigReader::getInt(const std::string& section, const std::string& key, bool defaultValue)
try {
    const std::optional<std::string> text = HostConfiguration::instance().values()->find(section, key);
    return text ? integerIn(*text) : static_cast<int>(defaultValue);
} catch (const std::exception& error) {
    reportFailure(
        "ConfigReader::getInt()", __LINE__,
        {"[", section, "] ", key, " counts as 1: ", error.what(), ". Correct the configuration file and reload it."});
    return kSwitchedOn;
}
