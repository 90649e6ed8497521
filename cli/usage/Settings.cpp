#include "usage/Settings.h"

#include "base/Environment.h"
#include "base/UsageError.h"
#include "usage/ConfigFile.h"
#include "usage/Options.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

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
    const std::string text = environmentText(variable);
    return text.empty() ? std::nullopt : std::optional<Setting>({variable, text});
}

std::optional<Setting> fileSetting(const Option& option, const ConfigFile& file)
{
    const auto found = file.values.find(keyOf(option));
    return found == file.values.end()
               ? std::nullopt
               : std::optional<Setting>({"\"" + keyOf(option) + "\" in " + file.path, found->second});
}

void store(const Option& option, const std::optional<Setting>& setting, Arguments& arguments)
try {
    if (setting) {
        option.store(arguments, setting->text);
    }
} catch (const std::invalid_argument& error) {
    throw UsageError(setting->source + " " + error.what() + ".");
}

using OpenOptions = std::vector<const Option*>;

bool givesPassword(const Option* option)
{
    return keyOf(*option) == "password-file" || keyOf(*option) == "password-stdin";
}

// Stores what one place sets; the options that it leaves open are for the next place to set.
template <typename Place>
OpenOptions storeFrom(const Place& settingOf, const OpenOptions& options, Arguments& arguments)
{
    OpenOptions open;
    for (const Option* const option : options) {
        const std::optional<Setting> setting = settingOf(*option);
        store(*option, setting, arguments);
        if (!setting) {
            open.push_back(option);
        }
    }
    // One of the two leaves the other one nothing to set.
    if (!arguments.passwordFile.empty() || arguments.passwordFromInput) {
        open.erase(std::remove_if(open.begin(), open.end(), givesPassword), open.end());
    }
    return open;
}

} // namespace

void applySettings(const TypedOptions& typed, Arguments& arguments)
{
    OpenOptions open;
    for (const Option& option : options()) {
        open.push_back(&option);
    }
    open = storeFrom([&typed](const Option& option) { return typedSetting(option, typed); }, open, arguments);
    open = storeFrom(environmentSetting, open, arguments);
    const std::optional<ConfigFile> file = findConfigFile(arguments.configFile);
    if (file) {
        storeFrom([&file](const Option& option) { return fileSetting(option, *file); }, open, arguments);
        arguments.configFile = file->path;
    }
}
