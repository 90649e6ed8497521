#include "harness/DoctorProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

// Spawned, because the test server's threads run in this process: between a fork and an exec little is allowed then.
DoctorProcess::DoctorProcess(const std::vector<std::string>& arguments, const std::string& password,
                             const std::vector<std::string>& more)
{
    std::vector<std::string> words = {SFTPCLIENT_COMMAND, "doctor"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    // The lists that rename and delete leave behind are kept in sight of leak detection; what is preloaded comes before
    // the sanitizer's library.
    std::vector<std::string> variables = {"SFTPCLIENT_PASSWORD=" + password, "LD_PRELOAD=" SFTPCLIENT_KEPT_LISTS,
                                          "ASAN_OPTIONS=verify_asan_link_order=0"};
    variables.insert(variables.end(), more.begin(), more.end());
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, m_out.path().c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, m_err.path().c_str(), O_WRONLY, 0);
    const int error = posix_spawn(&m_process, SFTPCLIENT_COMMAND, &files, nullptr, pointersTo(words).data(),
                                  pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), SFTPCLIENT_COMMAND);
    }
}

DoctorProcess::~DoctorProcess()
{
    if (m_process > 0) {
        signal(SIGKILL);
        wait();
    }
}

void DoctorProcess::signal(int number) const { kill(m_process, number); }

pid_t DoctorProcess::child() const
{
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        if (entry.path().filename().string().find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        std::ifstream file(entry.path() / "stat");
        const std::string stat(std::istreambuf_iterator<char>(file), {});
        // "PID (NAME) STATE PARENT ..."
        std::istringstream fields(stat.substr(std::min(stat.size(), stat.rfind(')') + 1)));
        std::string state;
        pid_t parent = 0;
        if (fields >> state >> parent && parent == m_process) {
            return std::stoi(stat);
        }
    }
    throw std::runtime_error("there is no child");
}

int DoctorProcess::wait()
{
    int status = 0;
    waitpid(m_process, &status, 0);
    m_process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
