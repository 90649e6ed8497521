#include "Inetd.h"

#include "support/TemporaryFolder.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <future>
#include <stdexcept>
#include <utility>

Inetd::Inetd(const PrivateSystem& system, ProcessSetup daemon, bool listensItself)
    : m_daemon(std::move(daemon)), m_listensItself(listensItself)
{
    writeFile(m_daemon.err, "");
    m_port.listen();
    // The test adopts the processes that daemons start for a session when their parent ends, so that it can wait for
    // them too.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::promise<void> entered;
    m_thread = std::thread([this, &system, &entered] {
        try {
            // Only this thread is in the namespace: the test itself still sees the real machine.
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
        throw;
    }
}

Inetd::~Inetd()
{
    m_port.stop();
    m_thread.join();
    for (const auto& daemon : m_daemons) {
        kill(-daemon->id(), SIGKILL);
    }
    m_daemons.clear();
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

void Inetd::serve()
{
    if (m_listensItself) {
        m_daemon.environment.emplace_back("LD_PRELOAD", HANDED_SOCKET);
        start(m_port.socket());
        return;
    }
    for (int connection = 0; (connection = m_port.accept()) >= 0;) {
        ++m_connections;
        start(connection);
        close(connection);
    }
}

void Inetd::start(int socket)
{
    m_daemon.connection = socket;
    try {
        m_daemons.push_back(std::make_unique<Process>(m_daemon));
    } catch (const std::runtime_error& error) {
        std::ofstream(m_daemon.err, std::ios::app) << error.what() << "\n";
    }
}
