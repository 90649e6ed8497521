#include "harness/Trees.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

Trees::Trees()
{
    config.timesOfDisk = true;
    fs::create_directories(here());
    fs::create_directories(there());
}

ProgramResult Trees::push(Words more) const
{
    more.insert(more.begin(), {"push", "here", url("/there/")});
    return run(more);
}

ProgramResult Trees::pull(Words more) const
{
    more.insert(more.begin(), {"pull", url("/there/"), "here"});
    return run(more);
}

Lines Trees::commands(const std::vector<std::string>& verbs)
{
    Lines found;
    for (const Lines& session : sessions()) {
        for (const std::string& line : session) {
            const bool isWanted = std::any_of(verbs.begin(), verbs.end(), [&line](const std::string& verb) {
                return line == "> " + verb || line.rfind("> " + verb + " ", 0) == 0;
            });
            if (isWanted) {
                found.push_back(line.substr(2));
            }
        }
    }
    return found;
}
