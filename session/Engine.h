#ifndef SFTPCLIENT_SESSION_ENGINE_H
#define SFTPCLIENT_SESSION_ENGINE_H

#include "call/Failure.h"
#include "call/StopSwitch.h"
#include "connection/Pool.h"
#include "operation/Operations.h"
#include "request/OptionsCheck.h"

#include <SFtpSession.h>

#include <functional>
#include <mutex>
#include <set>
#include <string>

/// The way of a call, from the top down. Nothing knows what is above it.
///
///     SFtpSession.cpp        the public functions: each names its operation
///     Engine                 takes a connection for it, runs it, makes a result and a record of its end
///     operation/             what is said and moved: Commands, Listing, Download, Upload
///     connection/Transfer    one transfer of libcurl's: its options and callbacks
///     connection/Connection  the easy handle, its sockets, and the wait for them; kept in the Pool
///
/// Beside it: request/ (what a request and the options mean: URL, login, trust), files/ (the local ones), call/
/// (limits, progress, the caller's exceptions, Cancel, the thread's state, and Failure, by which every call that fails
/// ends).
namespace session {

/// Servers of which something is known, for all threads.
class ServerSet
{
public:
    void add(const std::string& server)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_servers.insert(server);
    }

    bool holds(const std::string& server) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_servers.count(server) > 0;
    }

private:
    mutable std::mutex m_mutex;
    std::set<std::string> m_servers;
};

class Engine
{
public:
    using Operation = std::function<void(const Work&)>;

    /// Throws `std::invalid_argument`, whose text names the field, for options that cannot be.
    explicit Engine(SessionOptions&& options);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Runs one operation over a connection of its own; 0, or the code of a failure, whose text replaces `errorText`.
    int call(const char* function, const SFtpRequest& request, std::string& errorText, const Operation& operation);

    StopSwitch& stop() { return m_stop; }

private:
    void run(const SFtpRequest& request, const Operation& operation);
    bool tryToRun(Access& access, Call& call, const Operation& operation, bool fresh);
    void runWithSomeTls(const Work& work, const Operation& operation);

    const Options m_options;
    ServerSet m_newestTlsOnly; // they refused TLS 1.2
    StopSwitch m_stop;
    Pool m_pool;
};

} // namespace session

#endif
