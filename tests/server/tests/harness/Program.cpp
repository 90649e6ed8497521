#include "harness/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

namespace {

std::array<int, 2> makePipe()
{
    std::array<int, 2> ends = {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "No pipe can be had");
    }
    return ends;
}

std::string lineFrom(int descriptor)
{
    std::string text;
    char byte = 0;
    while (::read(descriptor, &byte, 1) == 1 && byte != '\n') {
        text += byte;
    }
    return text;
}

} // namespace

Program::Program(const std::vector<std::string>& arguments)
{
    std::string program = TEST_SERVER_PROGRAM;
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers = {program.data()};
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const std::array<int, 2> input = makePipe();
    const std::array<int, 2> output = makePipe();
    m_process = ::fork();
    if (m_process == 0) {
        ::dup2(input[0], STDIN_FILENO);
        ::dup2(output[1], STDOUT_FILENO);
        ::dup2(output[1], STDERR_FILENO);
        ::execv(program.c_str(), pointers.data());
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    m_input = input[1];
    m_output = output[0];
}

Program::~Program()
{
    endInput();
    ::close(m_output);
    if (m_process > 0) {
        signal(SIGKILL);
        wait();
    }
}

std::uint16_t Program::port()
{
    const std::string expected = "listening on 127.0.0.1:";
    const std::string said = lineFrom(m_output);
    if (said.compare(0, expected.size(), expected) != 0) {
        throw std::runtime_error("The server says \"" + said + "\"");
    }
    return static_cast<std::uint16_t>(std::stoi(said.substr(expected.size())));
}

void Program::endInput()
{
    if (m_input >= 0) {
        ::close(m_input);
        m_input = -1;
    }
}

void Program::signal(int number) const { ::kill(m_process, number); }

int Program::wait()
{
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string Program::rest()
{
    std::string text;
    std::array<char, 4096> block = {};
    ssize_t got = 0;
    while ((got = ::read(m_output, block.data(), block.size())) > 0) {
        text.append(block.data(), static_cast<std::size_t>(got));
    }
    return text;
}
