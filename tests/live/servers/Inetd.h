#ifndef SERVERS_INETD_H
#define SERVERS_INETD_H

#include "PrivateSystem.h"

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

/// Listens for a daemon and starts it once for every connection, with the connection as its standard input and
/// output. The port is the kernel's choice and is bound and listened on before anyone is told of it, so that there is
/// no moment at which another process could take it, or a client come too early.
class Inetd
{
public:
    /// log: takes the daemon's standard error. Throws `std::system_error`.
    Inetd(const PrivateSystem& system, std::vector<std::string> command, std::vector<std::string> environment,
          std::string log);

    /// Ends the daemons that still run, and waits for all child processes.
    ~Inetd();
    Inetd(const Inetd&) = delete;
    Inetd& operator=(const Inetd&) = delete;

    std::uint16_t port() const { return m_port; }

    /// How many connections there have been.
    unsigned connections() const { return m_connections; }

private:
    void serve();
    void start(int connection);

    std::vector<std::string> m_command;
    std::vector<std::string> m_environment;
    std::string m_log;
    int m_listening = -1;
    std::uint16_t m_port = 0;
    std::vector<pid_t> m_daemons;
    std::atomic<unsigned> m_connections{0};
    std::thread m_thread;
};

#endif
