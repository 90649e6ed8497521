#include "harness/RunProgram.h"

#include "harness/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int kCannotRun = 126;

void redirect(int descriptor, const std::string& path)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) {
        _exit(kCannotRun);
    }
}

[[noreturn]] void become(std::vector<std::string> command)
{
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (std::string& word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    execv(words.front(), words.data());
    _exit(kCannotRun);
}

} // namespace

ProgramResult runProgram(const std::vector<std::string>& command,
                         const std::vector<std::pair<std::string, std::string>>& environment)
{
    const TemporaryFolder folder;
    const pid_t process = fork();
    if (process == 0) {
        redirect(STDOUT_FILENO, folder.file("out"));
        redirect(STDERR_FILENO, folder.file("err"));
        for (const auto& variable : environment) {
            setenv(variable.first.c_str(), variable.second.c_str(), 1);
        }
        become(command);
    }
    int status = 0;
    while (process > 0 && waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (process < 0 || (WIFEXITED(status) && WEXITSTATUS(status) == kCannotRun)) {
        throw std::runtime_error(command.front() + " cannot be run.");
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contentOf(folder.file("out")),
            contentOf(folder.file("err"))};
}
