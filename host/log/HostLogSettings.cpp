#include "HostLogSettings.h"

#include "IniFile.h"
#include "IntegerText.h"

#include <cstddef>
#include <limits>
#include <stdexcept>

namespace {

constexpr char kSection[] = "Log";
constexpr long long kMostFiles = 1000;

[[noreturn]] void refuse(const char* key, const std::string& why)
{
    throw std::runtime_error(std::string("[") + kSection + "] " + key + ": " + why);
}

std::string targetFrom(const std::string& text)
{
    if (text.empty()) {
        refuse("Target", "it is empty, but must be stderr or a file");
    }
    return text == "stderr" ? std::string() : text;
}

LogLevel levelFrom(const std::string& text)
{
    if (text == "debug") {
        return LogLevel::Debug;
    }
    if (text == "info") {
        return LogLevel::Info;
    }
    if (text == "error") {
        return LogLevel::Error;
    }
    refuse("Level", "\"" + text + "\" is not debug, info or error");
}

LogFormat formatFrom(const std::string& text)
{
    if (text == "text") {
        return LogFormat::Text;
    }
    if (text == "json") {
        return LogFormat::Json;
    }
    refuse("Format", "\"" + text + "\" is neither text nor json");
}

std::size_t countFrom(const char* key, const std::string& text, long long highest)
try {
    return static_cast<std::size_t>(integerFrom(text, 1, highest));
} catch (const std::runtime_error& error) {
    refuse(key, error.what());
}

} // namespace

HostLogSettings logSettingsFrom(const IniFile& values)
{
    values.allowOnly(kSection, {"Target", "Level", "Format", "MaxBytes", "Files"});
    HostLogSettings settings;
    if (const auto target = values.find(kSection, "Target")) {
        settings.file = targetFrom(*target);
    }
    if (const auto level = values.find(kSection, "Level")) {
        settings.level = levelFrom(*level);
    }
    if (const auto format = values.find(kSection, "Format")) {
        settings.format = formatFrom(*format);
    }
    if (const auto maxBytes = values.find(kSection, "MaxBytes")) {
        settings.maxBytes = countFrom("MaxBytes", *maxBytes, std::numeric_limits<std::ptrdiff_t>::max());
    }
    if (const auto files = values.find(kSection, "Files")) {
        settings.files = countFrom("Files", *files, kMostFiles);
    }
    return settings;
}
