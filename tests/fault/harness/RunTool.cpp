#include "harness/RunTool.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

int runTool(const std::vector<std::string>& arguments)
{
    std::string program = "curl";
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers = {program.data()};
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t process = -1;
    if (::posix_spawnp(&process, program.c_str(), nullptr, nullptr, pointers.data(), environ) != 0) {
        throw std::runtime_error("The command curl cannot be run: install the package curl.");
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            throw std::runtime_error("The command curl got lost.");
        }
    }
    if (!WIFEXITED(status)) {
        throw std::runtime_error("A signal ended the command curl.");
    }
    return WEXITSTATUS(status);
}
