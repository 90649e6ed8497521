#ifndef SERVERTEST_HARNESS_PROGRAM_H
#define SERVERTEST_HARNESS_PROGRAM_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

/// The program `ftp-test-server`, run with pipes for its input and output. A running one is ended with the object.
class Program
{
public:
    explicit Program(const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The port that its first line tells.
    std::uint16_t port();

    void endInput();
    void signal(int number) const;

    /// Waits for its end and gives its exit code, or minus the signal that ended it.
    int wait();
    /// What it printed to both streams and has not been read yet.
    std::string rest();

private:
    pid_t m_process = -1;
    int m_input = -1;
    int m_output = -1;
};

#endif
