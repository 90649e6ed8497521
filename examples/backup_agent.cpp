// Backs up a folder again and again, as a service of systemd: backup-agent.service is its unit.
//
//     g++ -std=c++17 backup_agent.cpp $(pkg-config --cflags --libs sftpclient-host sftpclient-session) -o backup-agent
//     CREDENTIALS_DIRECTORY=/etc/backup-agent/credentials backup-agent /etc/backup-agent/backup-agent.ini
//
// SIGTERM and SIGINT cancel what runs and remove its temporary file from the server; SIGHUP rereads section Log of the
// configuration and reopens the log. Files that have not changed are not sent again until the agent restarts.

#include "backup_files.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>
#include <HostConfiguration.h>
#include <HostLog.h>
#include <RequestIdScope.h>
#include <SFtpSession.h>

#include <curl/curl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace {

namespace fs = std::filesystem;

/// Tells systemd, if that started this program: lines of NAME=VALUE, as in sd_notify(3).
void notify(const std::string& state)
{
    const char* const name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    const std::string path = name == nullptr ? "" : name;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return;
    }
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    if (path.front() == '@') {
        address.sun_path[0] = '\0'; // a socket without a file
    }
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    static_cast<void>(
        sendto(sender, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), length));
    close(sender);
}

/// A line for the journal, with the priority that it takes from the beginning of a line. Whoever names a file must not
/// write lines of his own.
void report(int priority, const std::string& text)
{
    std::cerr << "<" + std::to_string(priority) + ">" + escapeControlBytes(text) + "\n" << std::flush;
}

constexpr int kError = 3;
constexpr int kInformation = 6;

/// A credential without the line end that editors add.
std::string credential(const std::string& directory, const std::string& name)
{
    std::string text = contentOf(directory + "/" + name);
    for (const char lineEnd : {'\n', '\r'}) {
        if (!text.empty() && text.back() == lineEnd) {
            text.pop_back();
        }
    }
    return text;
}

struct Settings
{
    SFtpRequest server; ///< the login, and the URL of the directory to back up to
    fs::path folder;
    std::chrono::seconds interval = std::chrono::hours(1);
};

/// Of a number that is too small or too large, the agent would send without a pause.
std::chrono::seconds secondsFrom(const std::string& text)
{
    constexpr unsigned kYear = 31536000;
    unsigned seconds = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, seconds);
    if (read.ec != std::errc() || read.ptr != end || seconds < 1 || seconds > kYear) {
        throw std::runtime_error("Interval in section Backup of the configuration is \"" + text +
                                 "\", but must be a number of seconds from 1 to " + std::to_string(kYear) + ".");
    }
    return std::chrono::seconds(seconds);
}

std::string required(const IniFile& values, const std::string& key)
{
    const std::optional<std::string> value = values.find("Backup", key);
    if (!value || value->empty()) {
        throw std::runtime_error("Section Backup of the configuration lacks " + key + ".");
    }
    return *value;
}

Settings settingsFrom(const IniFile& values, const std::string& credentials)
{
    values.allowOnly("Backup", {"Url", "User", "Folder", "Interval"});
    Settings settings;
    settings.server.remotePath = required(values, "Url");
    if (settings.server.remotePath.back() != '/') {
        settings.server.remotePath += "/";
    }
    settings.server.userName = required(values, "User");
    settings.server.password = credential(credentials, "password");
    settings.server.caCert = contentOf(credentials + "/ca");
    settings.folder = required(values, "Folder");
    if (const std::optional<std::string> interval = values.find("Backup", "Interval")) {
        settings.interval = secondsFrom(*interval);
    }
    return settings;
}

/// Whether the next file would fail as well.
bool isTheServersFailure(int result)
{
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_USE_SSL_FAILED:
    case CURLE_LOGIN_DENIED:
        return true;
    default:
        return false;
    }
}

/// Sends the files of a folder, on a thread of its own, round after round.
class Agent
{
public:
    explicit Agent(Settings settings) : m_settings(std::move(settings)), m_thread([this] { run(); }) {}

    ~Agent()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isStopping = true;
        }
        m_stop.notify_all();
        m_session.Cancel();
        m_thread.join();
        removeWhatIsLeft();
    }

    Agent(const Agent&) = delete;
    Agent& operator=(const Agent&) = delete;

private:
    struct Version
    {
        std::uintmax_t size;
        fs::file_time_type modified;
    };

    struct Counts
    {
        unsigned sent = 0;
        unsigned failed = 0;
        unsigned unchanged = 0;
    };

    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isStopping) {
            lock.unlock();
            const RequestIdScope requestId(++m_round); // all records of this round carry it
            sendAll();
            lock.lock();
            m_stop.wait_for(lock, m_settings.interval, [this] { return m_isStopping; });
        }
    }

    void sendAll()
    try {
        Counts counts;
        const FilesBelow found = filesBelow(m_settings.folder);
        for (const std::string& unread : found.unread) {
            ++counts.failed;
            report(kError, unread);
        }
        for (const fs::path& file : found.files) {
            if (!send(file, counts)) {
                break;
            }
        }
        if (m_interrupted.empty()) {
            const std::string summary = std::to_string(counts.sent) + " sent, " + std::to_string(counts.failed) +
                                        " failed, " + std::to_string(counts.unchanged) + " unchanged";
            report(counts.failed == 0 ? kInformation : kError, "round " + std::to_string(m_round) + ": " + summary);
            notify("STATUS=Round " + std::to_string(m_round) + ": " + summary);
        }
    } catch (const std::exception& error) {
        report(kError, "round " + std::to_string(m_round) + ": " + error.what());
        notify("STATUS=Round " + std::to_string(m_round) + ": " + error.what());
    }

    /// Whether to go on with the next file.
    bool send(const fs::path& file, Counts& counts)
    {
        const fs::path path = m_settings.folder / file;
        std::error_code gone; // which the upload will report
        const Version now = {fs::file_size(path, gone),
                             fs::last_write_time(path, gone)}; // before its first byte is read
        const auto known = m_sent.find(file);
        if (known != m_sent.end() && known->second.size == now.size && known->second.modified == now.modified) {
            ++counts.unchanged;
            return true;
        }
        SFtpRequest request = m_settings.server;
        request.remotePath += percentEncoded(file.generic_string());
        request.localPath = path.string();
        std::string errorText;
        const int result = m_session.UploadFileToSFtpServer(request, errorText);
        if (result == CURLE_ABORTED_BY_CALLBACK) { // cancelled
            m_interrupted = file;
            return false;
        }
        if (result != 0) {
            ++counts.failed;
            report(kError, request.localPath + ": " + std::to_string(result) + " " + errorText);
            return !isTheServersFailure(result);
        }
        ++counts.sent;
        m_sent[file] = now;
        return true;
    }

    // A server that does not answer must not hold up a shutdown.
    void removeWhatIsLeft()
    {
        if (m_interrupted.empty()) {
            return;
        }
        SessionOptions limits;
        limits.callTimeout = std::chrono::seconds(5);
        SFtpSession session(limits);
        std::string directory;
        std::string errorText;
        const int result = removeTemporaryFiles(session, m_settings.server, m_interrupted, directory, errorText);
        if (result != 0 && result != CURLE_REMOTE_FILE_NOT_FOUND) { // the upload may not even have made its directory
            report(kError,
                   "temporary files may remain in " + directory + ": " + std::to_string(result) + " " + errorText);
        }
    }

    const Settings m_settings;
    SFtpSession m_session;
    std::map<fs::path, Version> m_sent;
    fs::path m_interrupted;
    unsigned long m_round = 0;

    std::mutex m_mutex;
    std::condition_variable m_stop;
    bool m_isStopping = false; // with the mutex
    std::thread m_thread;      // uses all of the above
};

/// The signals that end the agent or reopen its log; they wait until `next` takes them.
class Signals
{
public:
    /// REQUIRES: before the first thread, which would get them otherwise.
    Signals()
    {
        sigemptyset(&m_signals);
        for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
            sigaddset(&m_signals, number);
        }
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }

    int next() const
    {
        int number = 0;
        sigwait(&m_signals, &number);
        return number;
    }

private:
    sigset_t m_signals = {};
};

void openLog() { HostLog::instance().apply(logSettingsFrom(*HostConfiguration::instance().values())); }

void reopenLog()
try {
    notify("RELOADING=1");
    HostConfiguration::instance().reload();
    openLog();
    notify("READY=1\nSTATUS=The log was reopened");
} catch (const std::exception& error) {
    report(kError, std::string("The log and its settings stay as they are: ") + error.what());
    notify("READY=1");
}

} // namespace

int main(int argc, char** argv)
try {
    const char* const credentials = std::getenv("CREDENTIALS_DIRECTORY");
    if (argc != 2 || credentials == nullptr) {
        std::cerr << "usage: CREDENTIALS_DIRECTORY=... backup-agent INI-FILE\n";
        return 2;
    }
    const Signals signals;
    HostConfiguration::instance().load(argv[1]);
    openLog();
    const CurlProcess curl; // before the first thread that uses the library, until after the last

    const Settings settings = settingsFrom(*HostConfiguration::instance().values(), credentials);
    notify("READY=1\nSTATUS=Started");
    const Agent agent(settings);
    while (signals.next() == SIGHUP) {
        reopenLog();
    }
    notify("STOPPING=1\nSTATUS=Cancelling what runs");
    return 0;
} catch (const std::exception& error) {
    report(kError, error.what());
    return 1;
}
