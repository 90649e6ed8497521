#ifndef SUPPORT_PROCESS_H
#define SUPPORT_PROCESS_H

#include <gtest/gtest.h>

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

using Words = std::vector<std::string>;
using Variables = std::vector<std::pair<std::string, std::string>>;

/// How to start a program. What is empty is as it is in this process.
struct ProcessSetup
{
    Words words; ///< the program first: a path, or a name to look for in PATH
    Variables environment = {};
    std::string folder = {};
    std::string in = "/dev/null"; ///< files for the standard streams
    std::string out = {};
    std::string err = {};
    std::string terminal = {}; ///< in place of all three; it becomes the program's own
    int connection = -1;       ///< in place of standard input and output
    int ignored = 0;           ///< a signal that the program ignores from its beginning
};

/// A program that runs in a session of its own, without the settings of the machine's user: no HOME, no variable
/// SFTPCLIENT_... but those of the setup. It gets no descriptors but the standard ones.
class Process
{
public:
    /// Throws `std::runtime_error` where there is no such program.
    explicit Process(const ProcessSetup& setup);
    /// Kills it, if it still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return m_process; }

    void signal(int number) const;

    /// Waits for its end. The exit status, or the negative number of the signal that ended it.
    int wait();

private:
    pid_t m_process = -1;
};

struct ProgramResult
{
    int status; ///< the exit status, or the negative number of the signal that ended it
    std::string out;
    std::string err;
};

/// Runs a program to its end, and captures its standard output and error.
ProgramResult runProgram(ProcessSetup setup);

/// For EXPECT_TRUE: it ended with this status. A failure shows what it said.
testing::AssertionResult exited(int expected, const ProgramResult& result);

/// Both ends of a pipe, which the setup of a process can name as files.
class Pipe
{
public:
    Pipe();
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    /// For a process that this one starts.
    std::string reader() const;
    std::string writer() const;

    /// The next line of what is written, without its line end.
    std::string line() const;
    /// All that is written until the last writer closes the pipe.
    std::string rest() const;

    /// This process's own ends; it cannot name one that it has closed.
    void closeReader();
    void closeWriter();

private:
    int m_reader = -1;
    int m_writer = -1;
};

#endif
