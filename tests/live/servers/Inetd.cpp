#include "Inetd.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <future>
#include <system_error>
#include <utility>

namespace {

int listenOnLoopback(sockaddr_in& address)
{
    address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listening < 0 || ::bind(listening, generic, length) != 0 || listen(listening, SOMAXCONN) != 0 ||
        getsockname(listening, generic, &length) != 0) {
        throw std::system_error(errno, std::generic_category(), "No port can be had on 127.0.0.1");
    }
    return listening;
}

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

Inetd::Inetd(const PrivateSystem& system, std::vector<std::string> command, std::vector<std::string> environment,
             std::string log)
    : m_command(std::move(command)), m_environment(std::move(environment)), m_log(std::move(log))
{
    sockaddr_in address = {};
    m_listening = listenOnLoopback(address);
    m_port = ntohs(address.sin_port);
    // The processes that daemons start for a session become the test's when their parent ends, so that it can wait for
    // them too.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::promise<void> entered;
    m_thread = std::thread([this, &system, &entered] {
        try {
            // The namespace is this thread's alone: the test itself goes on seeing the real machine.
            system.enter();
        } catch (...) {
            entered.set_exception(std::current_exception());
            return;
        }
        entered.set_value();
        serve();
    });
    try {
        entered.get_future().get();
    } catch (...) {
        m_thread.join();
        close(m_listening);
        throw;
    }
}

Inetd::~Inetd()
{
    shutdown(m_listening, SHUT_RDWR);
    m_thread.join();
    close(m_listening);
    for (const pid_t daemon : m_daemons) {
        kill(-daemon, SIGKILL);
    }
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

void Inetd::serve()
{
    for (;;) {
        const int connection = accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            return;
        }
        ++m_connections;
        start(connection);
        close(connection);
    }
}

void Inetd::start(int connection)
{
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, connection, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, connection, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, m_log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);

    pid_t daemon = -1;
    const int error = posix_spawn(&daemon, m_command.front().c_str(), &files, &attributes, pointersTo(m_command).data(),
                                  pointersTo(m_environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error == 0) {
        m_daemons.push_back(daemon);
    } else {
        std::ofstream(m_log, std::ios::app)
            << m_command.front() << " cannot be started: " << std::generic_category().message(error) << "\n";
    }
}
