#include "harness/RunCommand.h"

#include "harness/TextFile.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace {

void redirect(const std::string& path, int descriptor)
{
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0 || dup2(file, descriptor) < 0) {
        _exit(126);
    }
}

// What the machine's user has set must not reach the command.
void clearSettings()
{
    std::vector<std::string> names{"XDG_CONFIG_HOME"};
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string name(*variable, std::strcspn(*variable, "="));
        if (name.rfind("SFTPCLIENT_", 0) == 0) {
            names.push_back(name);
        }
    }
    for (const std::string& name : names) {
        unsetenv(name.c_str());
    }
    setenv("HOME", "/nowhere", 1);
}

[[noreturn]] void becomeCommand(const std::vector<std::string>& arguments,
                                const std::vector<std::pair<std::string, std::string>>& environment)
{
    setsid();
    clearSettings();
    setenv("LSAN_OPTIONS", "fast_unwind_on_malloc=0:print_suppressions=0:suppressions=" SFTPCLIENT_LEFT_BEHIND, 1);
    for (const auto& variable : environment) {
        setenv(variable.first.c_str(), variable.second.c_str(), 1);
    }
    std::vector<std::string> words{SFTPCLIENT_COMMAND};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    execv(SFTPCLIENT_COMMAND, pointers.data());
    _exit(127);
}

} // namespace

CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::pair<std::string, std::string>>& environment)
{
    const TemporaryFile out;
    const TemporaryFile err;
    const pid_t child = fork();
    if (child == 0) {
        redirect(out.path(), STDOUT_FILENO);
        redirect(err.path(), STDERR_FILENO);
        becomeCommand(arguments, environment);
    }
    int ended = 0;
    if (child < 0 || waitpid(child, &ended, 0) != child) {
        throw std::runtime_error("cannot run the command");
    }
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, contentsOf(out.path()), contentsOf(err.path())};
}
