// Backs up a folder: four threads send its files over the connections of one session. Ctrl-C ends it with status 130
// and removes the temporary files of the uploads that it interrupts; a second Ctrl-C ends it at once.
//
//     g++ -std=c++17 backup_host.cpp $(pkg-config --cflags --libs sftpclient-host sftpclient-session) -o backup-host
//     HOST_PASSWORD=... backup-host settings.ini ca.pem photos ftp://backup.example.com/photos/
//
// Let section Log of settings.ini name a file: standard error shows the progress.

#include "backup_files.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>
#include <HostConfiguration.h>
#include <HostLog.h>
#include <SFtpSession.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <future>
#include <iostream>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr unsigned kThreads = 4;
constexpr int kInterrupted = 130; // 128 and SIGINT, as shells report it

std::atomic<SFtpSession*> sessionToCancel = nullptr;

void onCtrlC(int /*signal*/)
{
    static_cast<void>(std::signal(SIGINT, SIG_DFL));
    if (SFtpSession* const session = sessionToCancel) {
        session->Cancel();
    }
}

class Backup
{
public:
    /// `server`: the login, and the URL of the directory to back up to.
    Backup(SFtpRequest server, fs::path folder)
        : m_server(std::move(server)), m_folder(std::move(folder)), m_found(filesBelow(m_folder)),
          m_session(optionsWithProgress()), m_failed(m_found.unread.size())
    {
        for (const std::string& unread : m_found.unread) {
            std::cerr << "backup-host: " << escapeControlBytes(unread) << "\n";
        }
        for (const fs::path& file : m_found.files) {
            std::error_code gone; // which the upload will report
            const std::uintmax_t size = fs::file_size(m_folder / file, gone);
            m_totalBytes += gone ? 0 : static_cast<std::int64_t>(size);
        }
    }

    /// The exit status.
    int run()
    {
        sessionToCancel = &m_session;
        static_cast<void>(std::signal(SIGINT, onCtrlC));
        std::vector<std::future<void>> threads;
        for (unsigned i = 0; i < kThreads; ++i) {
            threads.push_back(std::async(std::launch::async, [this] { sendFiles(); }));
        }
        for (std::future<void>& thread : threads) {
            thread.get();
        }
        sessionToCancel = nullptr;
        m_isSending = false;
        std::cerr << "\n";
        if (m_interrupted.empty()) {
            return m_failed == 0 ? 0 : 1;
        }
        m_session.ClearCancel();
        std::for_each(m_interrupted.begin(), m_interrupted.end(),
                      [this](const fs::path& file) { removeTemporaryFilesOf(file); });
        std::cerr << "backup-host: interrupted\n";
        return kInterrupted;
    }

private:
    SessionOptions optionsWithProgress()
    {
        SessionOptions options;
        options.progress = [this](const TransferProgress& now) { showProgress(now.bytes); };
        return options;
    }

    void sendFiles()
    {
        for (std::size_t i = m_next++; i < m_found.files.size(); i = m_next++) {
            SFtpRequest request = m_server;
            request.remotePath += percentEncoded(m_found.files[i].generic_string());
            request.localPath = (m_folder / m_found.files[i]).string();
            bytesOfThisFile = 0;
            std::string errorText;
            const int result = m_session.UploadFileToSFtpServer(request, errorText);
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (result == kCancelled) {
                m_interrupted.push_back(m_found.files[i]);
                return;
            }
            if (result != 0) {
                ++m_failed;
                // A terminal obeys control characters, also those in a file's name.
                const std::string complaint = request.localPath + ": " + std::to_string(result) + " " + errorText;
                std::cerr << "\nbackup-host: " << escapeControlBytes(complaint) << "\n";
            }
        }
    }

    // Called on the thread that sends the file, and for the listings at the end.
    void showProgress(std::int64_t bytes)
    {
        if (!m_isSending) {
            return;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_sentBytes += bytes - bytesOfThisFile;
        bytesOfThisFile = bytes;
        std::cerr << "\r" << m_sentBytes << " of " << m_totalBytes << " bytes" << std::flush;
    }

    void removeTemporaryFilesOf(const fs::path& file)
    {
        std::string directory;
        std::string errorText;
        const int result = removeTemporaryFiles(m_session, m_server, file, directory, errorText);
        if (result != 0) {
            std::cerr << "backup-host: temporary files may remain in " << directory << ": " << result << " "
                      << errorText << "\n";
        }
    }

    static constexpr int kCancelled = 42; // CURLE_ABORTED_BY_CALLBACK
    static thread_local std::int64_t bytesOfThisFile;

    const SFtpRequest m_server;
    const fs::path m_folder;
    const FilesBelow m_found;
    std::atomic<std::size_t> m_next = 0;
    std::atomic<bool> m_isSending = true;
    SFtpSession m_session;

    std::mutex m_mutex; // for all that follows, and standard error
    std::int64_t m_totalBytes = 0;
    std::int64_t m_sentBytes = 0;
    std::size_t m_failed;
    std::vector<fs::path> m_interrupted;
};

thread_local std::int64_t Backup::bytesOfThisFile = 0;

} // namespace

int main(int argc, char** argv)
try {
    const char* const password = std::getenv("HOST_PASSWORD");
    if (argc != 5 || password == nullptr) {
        std::cerr << "usage: HOST_PASSWORD=... backup-host INI-FILE CA-FILE FOLDER URL\n";
        return 2;
    }
    HostConfiguration::instance().load(argv[1]);
    HostLog::instance().apply(logSettingsFrom(*HostConfiguration::instance().values()));
    const CurlProcess curl; // before the first thread that uses the library, until after the last

    SFtpRequest server;
    server.caCert = contentOf(argv[2]);
    server.remotePath = argv[4];
    if (server.remotePath.back() != '/') {
        server.remotePath += "/";
    }
    server.userName = "backup";
    server.password = password;
    return Backup(server, argv[3]).run();
} catch (const std::exception& error) {
    std::cerr << "backup-host: " << error.what() << "\n";
    return 1;
}
