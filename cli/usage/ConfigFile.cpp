#include "usage/ConfigFile.h"

#include "base/Environment.h"
#include "base/InputFile.h"
#include "base/UsageError.h"
#include "usage/Options.h"
#include "usage/Suggest.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/property_tree/ini_parser.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <vector>

namespace {

constexpr std::string::size_type kLargestFile = 1 << 20;

constexpr char kSection[] = "sftpclient";

// A file that names another in its own place would be half obeyed.
constexpr char kOwnKey[] = "config";

std::string usualPlace()
{
    const std::string configured = environmentText("XDG_CONFIG_HOME");
    const std::string home = environmentText("HOME");
    if (configured.empty() && home.empty()) {
        return {};
    }
    return (configured.empty() ? home + "/.config" : configured) + "/sftpclient/config";
}

std::vector<std::string> knownKeys()
{
    std::vector<std::string> keys;
    for (const Option& option : options()) {
        if (keyOf(option) != kOwnKey) {
            keys.push_back(keyOf(option));
        }
    }
    return keys;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason)
{
    throw UsageError("The configuration file " + path + " cannot be used (" + reason +
                     "): correct it, or name another with --config.");
}

// The host services read the file once more, so it must not be a pipe.
std::string contentsOf(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode)) {
        refuse(path, "it is a pipe");
    }
    std::string text;
    const std::string reason = InputFile(path).readWhole(kLargestFile, text);
    if (!reason.empty()) {
        refuse(path, reason);
    }
    return text;
}

boost::property_tree::ptree readIni(const std::string& path)
try {
    std::istringstream text(contentsOf(path));
    boost::property_tree::ptree sections;
    boost::property_tree::read_ini(text, sections);
    return sections;
} catch (const boost::property_tree::ini_parser_error& error) {
    refuse(path, error.message() + (error.line() == 0 ? "" : " in line " + std::to_string(error.line())));
}

bool isOneOf(const std::vector<std::string>& known, const std::string& key)
{
    return std::find(known.begin(), known.end(), key) != known.end();
}

// They would be passed over without a word.
void refuseOptionsAboveSections(const std::string& path, const boost::property_tree::ptree& sections,
                                const std::vector<std::string>& known)
{
    for (const auto& entry : sections) {
        if (!entry.second.data().empty() && isOneOf(known, entry.first)) {
            throw UsageError("\"" + entry.first + "\" in " + path +
                             " stands above all sections: write it below the line [sftpclient].");
        }
    }
}

// A file of the host's has sections of its own, even of a name like [sftp]: only what is hardly shorter is misspelt.
bool isMisspelt(const std::string& name)
{
    return name.size() + 2 >= std::size(kSection) && suggestionFor(boost::to_lower_copy(name), {kSection}) != ".";
}

// Its options would be passed over without a word.
void refuseMisspeltSection(const std::string& path, const boost::property_tree::ptree& sections,
                           const std::vector<std::string>& known)
{
    for (const auto& section : sections) {
        const bool hasOption = std::any_of(section.second.begin(), section.second.end(),
                                           [&known](const auto& entry) { return isOneOf(known, entry.first); });
        if (hasOption && isMisspelt(section.first)) {
            throw UsageError("Section [" + section.first + "] in " + path +
                             " is none of the command's: write [sftpclient].");
        }
    }
}

ConfigFile read(const std::string& path)
{
    ConfigFile file{path, {}};
    const boost::property_tree::ptree sections = readIni(path);
    const std::vector<std::string> known = knownKeys();
    refuseOptionsAboveSections(path, sections, known);
    const auto section = sections.find(kSection);
    if (section == sections.not_found()) {
        refuseMisspeltSection(path, sections, known);
        return file;
    }
    for (const auto& entry : section->second) {
        if (!isOneOf(known, entry.first)) {
            throw UsageError("\"" + entry.first + "\" in " + path + " is no option" +
                             suggestionFor(entry.first, known) + " Correct section [sftpclient] of the file.");
        }
        file.values[entry.first] = entry.second.data();
    }
    return file;
}

} // namespace

std::optional<ConfigFile> findConfigFile(const std::string& path)
{
    if (!path.empty()) {
        return read(path);
    }
    const std::string usual = usualPlace();
    return usual.empty() || access(usual.c_str(), F_OK) != 0 ? std::nullopt : std::optional(read(usual));
}
