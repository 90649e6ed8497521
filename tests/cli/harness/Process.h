#ifndef SFTPCLIENT_TESTS_CLI_PROCESS_H
#define SFTPCLIENT_TESTS_CLI_PROCESS_H

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

/// How to start a program. What is empty is as it is in this process.
struct ProcessSetup
{
    std::vector<std::string> words; // the program's path first
    std::vector<std::pair<std::string, std::string>> environment = {};
    std::string folder = {};
    std::string in = "/dev/null"; // files for the standard streams
    std::string out = {};
    std::string err = {};
    std::string terminal = {}; // in place of all three; it becomes the program's own
};

/// A program that runs in a session of its own, without the settings of the machine's user: no HOME, no variable
/// SFTPCLIENT_... but those of the setup.
class Process
{
public:
    explicit Process(const ProcessSetup& setup);
    /// Kills it, if it still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const;

    /// Waits for its end. The exit status, or the negative number of the signal that ended it.
    int wait();

private:
    pid_t m_process = -1;
};

#endif
