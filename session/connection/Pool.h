#ifndef SFTPCLIENT_SESSION_POOL_H
#define SFTPCLIENT_SESSION_POOL_H

#include "call/Call.h"
#include "call/StopSwitch.h"
#include "connection/Connection.h"
#include "request/Access.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace session {

/// The idle connections of a session, and the number of all connections to each server.
class Pool
{
public:
    Pool(unsigned mostToOneServer, std::chrono::milliseconds idleTimeout, StopSwitch& stop)
        : m_most(mostToOneServer), m_idleTimeout(idleTimeout), m_stop(stop)
    {
    }

    /// Reserves a connection for one call. The destructor returns it to the pool, if it is still usable.
    class Lease
    {
    public:
        Lease(Pool& pool, const Identity& identity, std::unique_ptr<Connection> connection);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        Connection& connection() { return *m_connection; }

    private:
        Pool& m_pool;
        const Identity& m_identity;
        std::unique_ptr<Connection> m_connection;
    };

    /// An idle connection of that identity, or a new one if there is none or `fresh` asks for it. Waits while the
    /// server has its maximum of connections. Throws `Failure` if the call must end meanwhile. REQUIRES: the identity
    /// outlives the lease.
    std::unique_ptr<Lease> take(const Identity& identity, const Call& call, bool fresh = false);

    /// Closes the idle connections.
    /// REQUIRES: no lease exists.
    void clear() { m_idle.clear(); }

private:
    struct Idle
    {
        Identity identity;
        std::unique_ptr<Connection> connection;
    };
    using Connections = std::list<Idle>;

    void closeOverdue();
    std::unique_ptr<Connection> takeIdle(const Identity& identity, bool fresh, Connections& closing);
    bool makeRoom(const std::string& server, Connections& closing);
    void countDown(const std::string& server);
    void giveBack(const Identity& identity, std::unique_ptr<Connection> connection);

    unsigned m_most;
    std::chrono::milliseconds m_idleTimeout;
    StopSwitch& m_stop;
    std::mutex m_mutex; // for all of the following
    std::condition_variable m_returned;
    Connections m_idle;                       // most recently used first
    std::map<std::string, unsigned> m_counts; // per server, including those in use
};

} // namespace session

#endif
