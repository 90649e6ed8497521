#include "SFtpSession.h"

#include "Access.h"
#include "Call.h"
#include "Failure.h"
#include "LocalFiles.h"
#include "Operations.h"
#include "OptionsCheck.h"
#include "Pool.h"
#include "StopSwitch.h"
#include "Text.h"
#include "ThreadState.h"

#include <LogProxy.h>
#include <transfer/CallResources.h>

#include <istream>
#include <mutex>
#include <ostream>
#include <set>
#include <utility>

using namespace session;

namespace {

// In bytes; a file of exactly the limit is refused. The library's own rule.
constexpr std::int64_t kRetentionDatabaseLimit = 104857600;
constexpr std::int64_t kFileLimit = 53687091200;

std::int64_t sizeLimitOf(const std::string& localPath)
{
    return localPath.substr(localPath.rfind('/') + 1) == "RetentionDB.db" ? kRetentionDatabaseLimit : kFileLimit;
}

/// Levels of a record, as the library's.
constexpr int kLogEnd = 2;
constexpr int kLogFailure = 4;

/// Writes one record of the calling thread's request; like the library's, its text begins with a 0.
void record(int level, const char* function, unsigned int line, const std::string& text)
{
    LogProxy(level, "SFtpSession", TSP_RequestID.get(), std::string("SFtpSession::") + function + "()", line)
        << 0 << text;
}

void requireFunction(const char* name, bool isThere)
{
    if (!isThere) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, std::string(name) + " is empty");
    }
}

/// The options, whose secrets do not stay in memory that is given back.
struct Options : SessionOptions
{
    explicit Options(SessionOptions&& options) : SessionOptions(std::move(options)) {}
    ~Options()
    {
        sftpWipeString(clientKey);
        sftpWipeString(proxy);
    }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
};

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

// What becomes of a connection that had been kept and was found dead: the server has carried nothing out.
bool diedWhileKept(const Connection& connection, const Call& call, CURLcode code)
{
    const bool lost = code == CURLE_RECV_ERROR || code == CURLE_SEND_ERROR || code == CURLE_GOT_NOTHING ||
                      code == CURLE_OPERATION_TIMEDOUT || code == CURLE_FTP_WEIRD_SERVER_REPLY;
    const std::size_t heard = connection.replies().lines().size();
    return lost && (heard == 0 || (heard == 1 && connection.replies().lastCode() == 421)) && !call.hasMoved() &&
           call.verdict() == CURLE_OK;
}

} // namespace

class SFtpSession::Engine
{
public:
    explicit Engine(SessionOptions&& options)
        : m_options(std::move(options)), m_pool(m_options.maxConnections, m_options.idleTimeout, m_stop)
    {
        checkOptions(m_options);
    }

    // Closing connections is libcurl's and OpenSSL's work as well.
    ~Engine()
    {
        try {
            const ThreadState left;
            m_pool.clear();
        } catch (const std::bad_alloc&) { // they are closed all the same
        }
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Runs one operation over a connection of its own, and makes a result and a record of its end.
    template <typename Operation>
    int call(const char* function, const SFtpRequest& request, std::string& errorText, const Operation& operation)
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

    StopSwitch& stop() { return m_stop; }

private:
    template <typename Operation>
    void run(const SFtpRequest& request, const Operation& operation)
    {
        Access access(request, m_options, m_certificates);
        Call call(m_options, m_stop);
        if (const CURLcode verdict = call.verdict()) {
            throw refusal(verdict, call.reason());
        }
        if (!tryToRun(access, call, operation, false)) {
            tryToRun(access, call, operation, true);
        }
    }

    // False where the operation may be tried once more, with a fresh connection.
    template <typename Operation>
    bool tryToRun(Access& access, Call& call, const Operation& operation, bool fresh)
    {
        const std::unique_ptr<Pool::Lease> lease = m_pool.take(access.identity(), call, fresh);
        Connection& connection = lease->connection();
        connection.newestTls = m_newestTlsOnly.holds(access.identity().server);
        const bool kept = connection.isOpen();
        try {
            try {
                operation(Work{connection, access, call});
            } catch (const Failure& failure) {
                if (connection.newestTls || !refusesTls12(connection, failure)) {
                    throw;
                }
                m_newestTlsOnly.add(access.identity().server);
                connection.newestTls = true;
                operation(Work{connection, access, call});
            }
            return true;
        } catch (const Failure& failure) {
            if (kept && !fresh && diedWhileKept(connection, call, failure.code())) {
                connection.giveUp();
                return false;
            }
            throw;
        }
    }

    // A server that has nothing but TLS 1.3: nothing has been said to it but that.
    static bool refusesTls12(const Connection& connection, const Failure& failure)
    {
        return failure.code() == CURLE_SSL_CONNECT_ERROR &&
               connection.detail().find("protocol version") != std::string::npos;
    }

    const Options m_options;
    CertificateReader m_certificates;
    ServerSet m_newestTlsOnly; // they refused TLS 1.2
    StopSwitch m_stop;
    Pool m_pool;
};

SFtpSession::SFtpSession(SessionOptions options) : m_engine(std::make_unique<Engine>(std::move(options))) {}

SFtpSession::~SFtpSession() = default;

int SFtpSession::Listsftpdir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("Listsftpdir", request, errorText, [&](const Work& work) {
        ArrivingFile file(request.localPath, work.call);
        listNames(work, [&file](const char* bytes, std::size_t count) { return file.write(bytes, count); });
        file.takePlace();
    });
}

int SFtpSession::DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("DownLoadSFtpFile", request, errorText, [&](const Work& work) {
        downloadFile(work, request.localPath, sizeLimitOf(request.localPath));
    });
}

int SFtpSession::ReNameSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("ReNameSFtpFile", request, errorText, renameFile);
}

int SFtpSession::DelSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("DelSFtpFile", request, errorText, deleteFile);
}

int SFtpSession::UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("UploadFileToSFtpServer", request, errorText,
                          [&](const Work& work) { uploadFile(work, request.localPath); });
}

int SFtpSession::TestSConnect(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("TestSConnect", request, errorText, test);
}

int SFtpSession::ListEntries(const SFtpRequest& request, std::vector<RemoteEntry>& entries, std::string& errorText)
{
    return m_engine->call("ListEntries", request, errorText, [&](const Work& work) { entries = listEntries(work); });
}

int SFtpSession::StatEntry(const SFtpRequest& request, RemoteEntry& entry, std::string& errorText)
{
    return m_engine->call("StatEntry", request, errorText, [&](const Work& work) { entry = statEntry(work); });
}

int SFtpSession::MakeSFtpDir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("MakeSFtpDir", request, errorText, makeDirectory);
}

int SFtpSession::RemoveSFtpDir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("RemoveSFtpDir", request, errorText, removeDirectory);
}

int SFtpSession::DownLoadTo(const SFtpRequest& request, const DataSink& sink, std::string& errorText)
{
    return m_engine->call("DownLoadTo", request, errorText, [&](const Work& work) {
        requireFunction("sink", sink != nullptr);
        download(work, sink, kFileLimit);
    });
}

int SFtpSession::DownLoadTo(const SFtpRequest& request, std::ostream& out, std::string& errorText)
{
    return DownLoadTo(
        request,
        [&out](const char* bytes, std::size_t count) {
            return static_cast<bool>(out.write(bytes, static_cast<std::streamsize>(count)));
        },
        errorText);
}

int SFtpSession::UploadFrom(const SFtpRequest& request, const DataSource& source, std::string& errorText,
                            std::int64_t size)
{
    return m_engine->call("UploadFrom", request, errorText, [&](const Work& work) {
        requireFunction("source", source != nullptr);
        upload(work, source, size);
    });
}

int SFtpSession::UploadFrom(const SFtpRequest& request, std::istream& in, std::string& errorText, std::int64_t size)
{
    return UploadFrom(
        request,
        [&in](char* bytes, std::size_t count) {
            in.read(bytes, static_cast<std::streamsize>(count));
            if (in.bad() || (in.fail() && !in.eof())) {
                throw refusal(CURLE_READ_ERROR, "the stream cannot be read");
            }
            return static_cast<std::size_t>(in.gcount());
        },
        errorText, size);
}

void SFtpSession::Cancel() noexcept { m_engine->stop().turnOn(); }

void SFtpSession::ClearCancel() noexcept { m_engine->stop().turnOff(); }
