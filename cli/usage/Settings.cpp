#include "usage/Settings.h"

#include "UsageError.h"
#include "usage/ConfigFile.h"
#include "usage/Options.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>

namespace {

struct Setting
{
    std::string source; // as a message names it
    std::string text;
};

std::optional<Setting> typedSetting(const Option& option, const TypedOptions& typed)
{
    const auto found = typed.find(option.name);
    return found == typed.end() ? std::nullopt : std::optional<Setting>({option.name, found->second});
}

std::optional<Setting> environmentSetting(const Option& option)
{
    const std::string variable = variableOf(option);
    const char* const text = std::getenv(variable.c_str());
    return text == nullptr || *text == '\0' ? std::nullopt : std::optional<Setting>({variable, text});
}

std::optional<Setting> fileSetting(const Option& option, const ConfigFile& file)
{
    const std::string* const text = file.find(keyOf(option));
    return text == nullptr ? std::nullopt
                           : std::optional<Setting>({"\"" + keyOf(option) + "\" in " + file.path(), *text});
}

void store(const Option& option, const std::optional<Setting>& setting, Arguments& arguments)
try {
    if (setting) {
        option.store(arguments, setting->text);
    }
} catch (const std::invalid_argument& error) {
    throw UsageError(setting->source + " " + error.what() + ".");
}

} // namespace

void applySettings(const TypedOptions& typed, Arguments& arguments)
{
    std::vector<const Option*> open;
    for (const Option& option : options()) {
        std::optional<Setting> setting = typedSetting(option, typed);
        if (!setting) {
            setting = environmentSetting(option);
        }
        store(option, setting, arguments);
        if (!setting) {
            open.push_back(&option);
        }
    }
    const std::optional<ConfigFile> file = findConfigFile(arguments.configFile);
    if (!file) {
        return;
    }
    for (const Option* const option : open) {
        store(*option, fileSetting(*option, *file), arguments);
    }
    arguments.configFile = file->path();
}
