// Runs a command and says what it took: "WALL USER SYSTEM PEAK CODE", in seconds, kibibytes, and its exit code.
//
// A program of its own because a process begins with the peak memory of the one that it was forked from: below a larger
// parent, such as an interpreter, every small command would seem to need as much as that.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>

namespace {

constexpr int kCannotRun = 127;

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// What the command prints would only be waited for.
[[noreturn]] void become(char** command)
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDIN_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    execvp(command[0], command);
    _exit(kCannotRun);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cerr << "usage: bench-spend COMMAND [ARGUMENT...]\n";
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        become(argv + 1);
    }
    int status = 0;
    rusage used = {};
    if (child < 0 || wait4(child, &status, 0, &used) != child) {
        std::cerr << argv[1] << " cannot be run: " << std::strerror(errno) << "\n";
        return 1;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::cout << std::fixed << wall.count() << " " << secondsOf(used.ru_utime) << " " << secondsOf(used.ru_stime) << " "
              << used.ru_maxrss << " " << code << "\n";
    return 0;
}
