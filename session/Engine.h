#ifndef SFTPCLIENT_SESSION_ENGINE_H
#define SFTPCLIENT_SESSION_ENGINE_H

#include "call/Failure.h"
#include "call/StopSwitch.h"
#include "connection/Pool.h"
#include "operation/Operations.h"
#include "request/Certificates.h"
#include "request/OptionsCheck.h"

#include <SFtpSession.h>

#include <functional>
#include <mutex>
#include <set>
#include <string>

/// The path of a call, from the top down. Nothing knows what is above it.
///
///     SFtpSession.cpp        the public functions: each names its operation
///     Engine                 takes a connection, runs the operation, returns its result and records it
///     operation/             what is sent and moved: Commands, Listing, Download, Upload
///     connection/Transfer    one libcurl transfer: its options and callbacks
///     connection/Connection  the easy handle and its sockets; kept in the Pool
///
/// Beside it: request/ (the meaning of a request and the options: URL, login, trust), files/ (local files), call/
/// (limits, progress, the caller's exceptions, Cancel, the thread's state, and Failure, the exception that ends a
/// call).
namespace session {

/// A set of servers, for all threads.
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

    /// Throws `std::invalid_argument` for invalid options, with a text that names the field.
    explicit Engine(SessionOptions&& options);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Runs one operation over a connection reserved for it. Returns 0, or the code of a failure, whose text replaces
    /// `errorText`.
    int call(const char* function, const SFtpRequest& request, std::string& errorText, const Operation& operation);

    StopSwitch& stop() { return m_stop; }

private:
    void run(const SFtpRequest& request, const Operation& operation);
    bool tryToRun(Access& access, Call& call, const Operation& operation, bool fresh);
    void runWithSomeTls(const Work& work, const Operation& operation);
    void rememberTls(const Work& work);

    const Options m_options;
    CertificateReader m_certificates;
    ServerSet m_newestTlsOnly; // they refused TLS 1.2
    StopSwitch m_stop;
    Pool m_pool;
};

} // namespace session

#endif
