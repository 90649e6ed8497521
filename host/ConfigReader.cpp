#include <ConfigReader.h>

#include "IniFile.h"

#include <LogProxy.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <stdexcept>

namespace {

constexpr int kFailure = 4;

// What cannot be understood must not switch a check off.
constexpr int kSwitchedOn = 1;

std::optional<std::string> findText(const std::string& section, const std::string& key)
{
    const char* const path = std::getenv("SFTPCLIENT_CONFIG");
    if (path == nullptr || *path == '\0') {
        return std::nullopt;
    }
    return IniFile(path).find(section, key);
}

int toInt(const std::string& text)
{
    int number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) {
        throw std::runtime_error("\"" + text + "\" is no integer");
    }
    return number;
}

} // namespace

int ConfigReader::getInt(const std::string& section, const std::string& key, bool defaultValue)
try {
    const std::optional<std::string> text = findText(section, key);
    return text ? toInt(*text) : static_cast<int>(defaultValue);
} catch (const std::runtime_error& error) {
    LogProxy(kFailure, "SFtpClientHost", TSP_RequestID.get(), "ConfigReader::getInt()", __LINE__)
        << 0 << "[" << section << "] " << key << " counts as 1: " << error.what()
        << ". Correct the file that SFTPCLIENT_CONFIG names.";
    return kSwitchedOn;
}
