#include "support/Process.h"

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <map>
#include <stdexcept>

namespace {

std::vector<std::string> environmentOf(const ProcessSetup& setup)
{
    std::map<std::string, std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        if (name.rfind("SFTPCLIENT_", 0) != 0 && name != "XDG_CONFIG_HOME") {
            variables[name] = text.substr(name.size() + 1);
        }
    }
    variables["HOME"] = "/nowhere";
    // A library that is preloaded comes before the sanitizer's.
    variables["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    for (const auto& variable : setup.environment) {
        variables[variable.first] = variable.second;
    }
    std::vector<std::string> texts;
    for (const auto& variable : variables) {
        texts.push_back(variable.first + "=" + variable.second);
    }
    return texts;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

class FileActions
{
public:
    explicit FileActions(const ProcessSetup& setup)
    {
        posix_spawn_file_actions_init(&m_actions);
        if (setup.connection >= 0) {
            posix_spawn_file_actions_adddup2(&m_actions, setup.connection, STDIN_FILENO);
            posix_spawn_file_actions_adddup2(&m_actions, setup.connection, STDOUT_FILENO);
            add(STDERR_FILENO, setup.err, O_WRONLY | O_APPEND);
        } else if (!setup.terminal.empty()) {
            add(STDIN_FILENO, setup.terminal, O_RDWR);
            posix_spawn_file_actions_adddup2(&m_actions, STDIN_FILENO, STDOUT_FILENO);
            posix_spawn_file_actions_adddup2(&m_actions, STDIN_FILENO, STDERR_FILENO);
        } else {
            add(STDIN_FILENO, setup.in, O_RDONLY);
            add(STDOUT_FILENO, setup.out, O_WRONLY | O_APPEND);
            add(STDERR_FILENO, setup.err, O_WRONLY | O_APPEND);
        }
        if (!setup.folder.empty()) {
            posix_spawn_file_actions_addchdir_np(&m_actions, setup.folder.c_str());
        }
        posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    void add(int descriptor, const std::string& path, int mode)
    {
        if (!path.empty()) {
            posix_spawn_file_actions_addopen(&m_actions, descriptor, path.c_str(), mode, 0);
        }
    }

    posix_spawn_file_actions_t m_actions = {};
};

// A session of its own, and signals as a terminal's user has them, even where this process ignores them.
class Attributes
{
public:
    explicit Attributes(int ignored)
    {
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : {SIGINT, SIGTERM, SIGQUIT, SIGHUP, SIGPIPE, SIGTSTP}) {
            if (number != ignored) {
                sigaddset(&signals, number);
            }
        }
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

// While a program is started, which inherits that.
class Ignored
{
public:
    explicit Ignored(int number) : m_number(number), m_before(number == 0 ? SIG_DFL : std::signal(number, SIG_IGN)) {}
    ~Ignored() { static_cast<void>(m_number == 0 ? SIG_DFL : std::signal(m_number, m_before)); }
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

private:
    using Handler = void (*)(int);

    int m_number;
    Handler m_before;
};

void closeEnd(int& end)
{
    if (end >= 0) {
        ::close(end);
        end = -1;
    }
}

std::string fileOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

} // namespace

Process::Process(const ProcessSetup& setup)
{
    std::vector<std::string> words = setup.words;
    std::vector<std::string> environment = environmentOf(setup);
    const FileActions actions(setup);
    const Attributes attributes(setup.ignored);
    const Ignored ignored(setup.ignored);
    // Spawned, because a test server's threads may run in this process: between a fork and an exec little is allowed.
    if (posix_spawnp(&m_process, words.front().c_str(), actions.get(), attributes.get(), pointersTo(words).data(),
                     pointersTo(environment).data()) != 0) {
        m_process = -1;
        throw std::runtime_error("cannot run " + words.front());
    }
}

Process::~Process()
{
    if (m_process > 0) {
        signal(SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

void Process::signal(int number) const { kill(m_process, number); }

int Process::wait()
{
    int status = 0;
    if (waitpid(m_process, &status, 0) != m_process) {
        throw std::runtime_error("cannot wait for the program");
    }
    m_process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

ProgramResult runProgram(ProcessSetup setup)
{
    const TextFile out;
    const TextFile err;
    setup.out = out.path();
    setup.err = err.path();
    const int status = Process(setup).wait();
    return {status, contentOf(out.path()), contentOf(err.path())};
}

testing::AssertionResult exited(int expected, const ProgramResult& result)
{
    if (result.status == expected) {
        return testing::AssertionSuccess() << "status " << expected;
    }
    return testing::AssertionFailure() << "status " << result.status << ", not " << expected << "; it said:\n"
                                       << result.out << result.err;
}

Pipe::Pipe()
{
    std::array<int, 2> ends = {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    m_reader = ends[0];
    m_writer = ends[1];
}

Pipe::~Pipe()
{
    closeReader();
    closeWriter();
}

std::string Pipe::reader() const { return fileOf(m_reader); }

std::string Pipe::writer() const { return fileOf(m_writer); }

std::string Pipe::line() const
{
    std::string text;
    char byte = 0;
    while (::read(m_reader, &byte, 1) == 1 && byte != '\n') {
        text += byte;
    }
    return text;
}

std::string Pipe::rest() const
{
    std::string text;
    std::array<char, 4096> block = {};
    ssize_t got = 0;
    while ((got = ::read(m_reader, block.data(), block.size())) > 0) {
        text.append(block.data(), static_cast<std::size_t>(got));
    }
    return text;
}

void Pipe::closeReader() { closeEnd(m_reader); }

void Pipe::closeWriter() { closeEnd(m_writer); }
