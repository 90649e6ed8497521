#include "connection/Pool.h"

#include "call/Failure.h"

#include <algorithm>
#include <utility>

namespace session {

namespace {

// A signal handler cannot notify a condition variable, so waiting threads check at this interval.
constexpr std::chrono::milliseconds kLook(20);

} // namespace

Pool::Lease::Lease(Pool& pool, const Identity& identity, std::unique_ptr<Connection> connection)
    : m_pool(pool), m_identity(identity), m_connection(std::move(connection))
{
}

Pool::Lease::~Lease() { m_pool.giveBack(m_identity, std::move(m_connection)); }

// Connections are closed outside the lock, because that sends QUIT.
std::unique_ptr<Pool::Lease> Pool::take(const Identity& identity, const Call& call, bool fresh)
{
    Connections closing;
    closeOverdue();
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        std::unique_ptr<Connection> connection = takeIdle(identity, fresh, closing);
        if (connection || m_counts[identity.server] < m_most || makeRoom(identity.server, closing)) {
            if (!connection) {
                ++m_counts[identity.server];
            }
            lock.unlock();
            closing.clear();
            try {
                if (!connection) {
                    connection = std::make_unique<Connection>(m_stop);
                }
                return std::make_unique<Lease>(*this, identity, std::move(connection));
            } catch (...) {
                giveBack(identity, nullptr);
                throw;
            }
        }
        m_returned.wait_for(lock, kLook);
        if (const CURLcode verdict = call.verdict()) {
            throw refusal(verdict, call.reason() + " while all connections to the server were in use");
        }
    }
}

void Pool::closeOverdue()
{
    const auto now = std::chrono::steady_clock::now();
    Connections overdue;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (auto each = m_idle.begin(); each != m_idle.end();) {
        const auto next = std::next(each);
        if (now - each->connection->lastUsed >= m_idleTimeout) {
            overdue.splice(overdue.end(), m_idle, each);
        }
        each = next;
    }
    lock.unlock();
    for (Idle& each : overdue) {
        each.connection.reset();
    }
    // Only now: the server counts them while they are open.
    lock.lock();
    for (const Idle& each : overdue) {
        countDown(each.identity.server);
    }
}

std::unique_ptr<Connection> Pool::takeIdle(const Identity& identity, bool fresh, Connections& closing)
{
    for (auto each = m_idle.begin(); each != m_idle.end(); ++each) {
        if (each->identity.digest != identity.digest) {
            continue;
        }
        // Over FTP a server that sends something unasked has left, or its replies are one too many.
        const bool isSsh = identity.server.compare(0, 5, "sftp:") == 0;
        if (fresh || (!isSsh && each->connection->hasNews())) {
            // If a kept connection was found dead, an older one is likely to be dead, too.
            countDown(identity.server);
            closing.splice(closing.end(), m_idle, each);
            return nullptr;
        }
        std::unique_ptr<Connection> connection = std::move(each->connection);
        m_idle.erase(each);
        return connection;
    }
    return nullptr;
}

// Closes an idle connection of another login.
bool Pool::makeRoom(const std::string& server, Connections& closing)
{
    const auto oldest = std::find_if(m_idle.rbegin(), m_idle.rend(),
                                     [&server](const Idle& each) { return each.identity.server == server; });
    if (oldest == m_idle.rend()) {
        return false;
    }
    closing.splice(closing.end(), m_idle, std::prev(oldest.base()));
    countDown(server);
    return true;
}

void Pool::giveBack(const Identity& identity, std::unique_ptr<Connection> connection)
{
    const bool keeps = connection && connection->isUsable() && m_idleTimeout.count() > 0;
    if (!keeps) {
        connection.reset(); // before another one is made: the server counts it while it is open
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (keeps) {
            try {
                m_idle.push_front({identity, nullptr});
                m_idle.front().connection = std::move(connection);
            } catch (const std::bad_alloc&) {
                countDown(identity.server);
            }
        } else {
            countDown(identity.server);
        }
    }
    // All, because some wait for another server.
    m_returned.notify_all();
}

void Pool::countDown(const std::string& server)
{
    const auto count = m_counts.find(server);
    if (--count->second == 0) {
        m_counts.erase(count);
    }
}

} // namespace session
