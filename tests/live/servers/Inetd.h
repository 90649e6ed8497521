#ifndef SERVERS_INETD_H
#define SERVERS_INETD_H

#include "PrivateSystem.h"

#include "support/LoopbackPort.h"
#include "support/Process.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

/// Listens for a daemon and starts it once for every connection, with the connection as its standard input and
/// output; or once for all, if it listens by itself, with the listening socket. The kernel chooses the port, which is
/// bound and listened on before anyone knows it, so that there is no moment at which another process could take it, or
/// a client come too early.
class Inetd
{
public:
    /// `daemon` names the file for its standard error. Throws `std::system_error`.
    Inetd(const PrivateSystem& system, ProcessSetup daemon, bool listensItself = false);

    /// Ends the daemons that still run, and waits for all child processes.
    ~Inetd();
    Inetd(const Inetd&) = delete;
    Inetd& operator=(const Inetd&) = delete;

    std::uint16_t port() const { return m_port.number(); }

    /// How many connections there have been; 0 for a daemon that listens by itself.
    unsigned connections() const { return m_connections; }

private:
    void serve();
    void start(int socket);

    ProcessSetup m_daemon;
    const bool m_listensItself;
    const LoopbackPort m_port;
    std::vector<std::unique_ptr<Process>> m_daemons;
    std::atomic<unsigned> m_connections{0};
    std::thread m_thread;
};

#endif
