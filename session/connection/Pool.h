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

/// The connections of a session that nobody uses at the moment, and how many there are.
class Pool
{
public:
    Pool(unsigned mostToOneServer, std::chrono::milliseconds idleTimeout, StopSwitch& stop)
        : m_most(mostToOneServer), m_idleTimeout(idleTimeout), m_stop(stop)
    {
    }

    /// A connection that is one call's alone until this object goes; then it is kept, if it is still of use.
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

    /// An idle connection of that identity, or where there is none or `fresh` asks for it, a new one. Waits while there
    /// are as many to that server as may be. Throws `Failure` when the call must end meanwhile.
    /// REQUIRES: the identity outlives the lease.
    std::unique_ptr<Lease> take(const Identity& identity, const Call& call, bool fresh = false);

    /// Closes what is idle.
    /// REQUIRES: no lease.
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
    std::mutex m_mutex; // for all that follows
    std::condition_variable m_returned;
    Connections m_idle;                       // the one used last in front
    std::map<std::string, unsigned> m_counts; // of each server, those in use included
};

} // namespace session

#endif
