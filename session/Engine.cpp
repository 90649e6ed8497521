#include "Engine.h"

#include "call/Call.h"
#include "call/ThreadState.h"
#include "request/Access.h"
#include "request/Text.h"

#include <LogProxy.h>

#include <memory>
#include <new>
#include <utility>

namespace session {

namespace {

/// Levels of a record, as in the library.
constexpr int kLogEnd = 2;
constexpr int kLogFailure = 4;

/// Writes one record for the calling thread's request; like the library's, its text begins with a 0.
void record(int level, const char* function, unsigned int line, const std::string& text)
{
    LogProxy(level, "SFtpSession", TSP_RequestID.get(), std::string("SFtpSession::") + function + "()", line)
        << 0 << text;
}

// Whether a kept connection was found dead or useless: no reply to this call has come over it, but at most one that is
// about connections (x2z) or was sent unasked.
bool diedWhileKept(const Connection& connection, const Call& call, CURLcode code)
{
    const bool lost = code == CURLE_RECV_ERROR || code == CURLE_SEND_ERROR || code == CURLE_GOT_NOTHING ||
                      code == CURLE_OPERATION_TIMEDOUT || code == CURLE_FTP_WEIRD_SERVER_REPLY;
    const std::size_t heard = connection.replies().count();
    const bool isAnswered =
        heard > 1 || (heard == 1 && !connection.wasToldUnasked && connection.replies().lastCode() / 10 % 10 != 2);
    return lost && !isAnswered && !call.hasMoved() && call.verdict() == CURLE_OK;
}

// The server supports only TLS 1.3. Nothing but the handshake has been sent.
bool refusesTls12(const Connection& connection, const Failure& failure)
{
    return failure.code() == CURLE_SSL_CONNECT_ERROR &&
           connection.detail().find("protocol version") != std::string::npos;
}

} // namespace

Engine::Engine(SessionOptions&& options)
    : m_options(std::move(options)), m_pool(m_options.maxConnections, m_options.idleTimeout, m_stop)
{
    checkOptions(m_options);
}

// Closing connections involves libcurl and OpenSSL, too.
Engine::~Engine()
{
    try {
        const ThreadState left;
        m_pool.clear();
    } catch (const std::bad_alloc&) { // they are closed by the member's destructor
    }
}

int Engine::call(const char* function, const SFtpRequest& request, std::string& errorText, const Operation& operation)
{
    const ThreadState left;
    try {
        run(request, operation);
    } catch (const Failure& failure) {
        errorText = failure.what();
        record(kLogFailure, function, __LINE__,
               shownUrl(request) + ": " + std::to_string(failure.code()) + " " + failure.what());
        return failure.code();
    } catch (...) {
        record(kLogFailure, function, __LINE__, shownUrl(request) + ": ended by an exception");
        throw;
    }
    record(kLogEnd, function, __LINE__, shownUrl(request) + ": end");
    return 0;
}

void Engine::run(const SFtpRequest& request, const Operation& operation)
{
    Call call(m_options, m_stop);
    if (const CURLcode verdict = call.verdict()) {
        throw refusal(verdict, call.reason());
    }
    Access access(request, m_options, m_certificates);
    if (!tryToRun(access, call, operation, false)) {
        tryToRun(access, call, operation, true);
    }
}

// False if the operation may be tried once more, with a fresh connection.
bool Engine::tryToRun(Access& access, Call& call, const Operation& operation, bool fresh)
{
    const std::unique_ptr<Pool::Lease> lease = m_pool.take(access.identity(), call, fresh);
    Connection& connection = lease->connection();
    const bool kept = connection.isOpen();
    try {
        runWithSomeTls({connection, access, call}, operation);
        return true;
    } catch (const Failure& failure) {
        if (kept && !fresh && diedWhileKept(connection, call, failure.code())) {
            connection.giveUp();
            return false;
        }
        throw;
    }
}

void Engine::runWithSomeTls(const Work& work, const Operation& operation)
{
    const std::string& server = work.access.identity().server;
    work.connection.newestTls = m_newestTlsOnly.holds(server);
    try {
        operation(work);
    } catch (const Failure& failure) {
        if (work.connection.newestTls || !refusesTls12(work.connection, failure)) {
            throw;
        }
        work.connection.newestTls = true;
        // Remembered once it has worked: anybody on the way can say that the server refuses TLS 1.2.
        try {
            operation(work);
        } catch (...) {
            rememberTls(work);
            throw;
        }
        rememberTls(work);
    }
}

void Engine::rememberTls(const Work& work)
{
    if (work.connection.isOpen()) {
        m_newestTlsOnly.add(work.access.identity().server);
    }
}

} // namespace session
