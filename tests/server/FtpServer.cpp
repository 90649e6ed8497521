#include "FtpServer.h"

#include "Listener.h"
#include "Session.h"
#include "TlsContexts.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>

namespace testserver {

namespace asio = boost::asio;

namespace {

// A write to a client that has left must fail, not end the process.
void blockSigpipe()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

} // namespace

class FtpServer::Implementation
{
public:
    explicit Implementation(const ServerConfig& config)
        : m_config(config), m_storage(m_config.root, m_config.ignoresCase), m_tls(m_config)
    {
        m_listener.bind(m_config.address, m_config.port);
        m_listener.listen();
        m_port = m_listener.port();
        m_accepting = std::thread([this] { accept(); });
    }

    ~Implementation() { stop(); }

    std::uint16_t port() const { return m_port; }

    std::vector<Transcript> transcripts()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_running == 0; });
        return m_transcripts;
    }

    void stop()
    {
        if (!m_accepting.joinable()) {
            return;
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_stopping = true;
        }
        m_changed.notify_all();
        ::shutdown(m_listener.handle(), SHUT_RDWR);
        m_accepting.join();
        for (Visit& visit : m_visits) {
            visit.sockets.interrupt();
        }
        for (Visit& visit : m_visits) {
            visit.thread.join();
        }
        m_visits.clear();
    }

private:
    struct Visit
    {
        OpenSockets sockets;
        std::thread thread;
        std::atomic<bool> over{false};
    };

    void accept()
    {
        unsigned accepted = 0;
        while (!m_stopping) {
            asio::ip::tcp::socket socket = m_listener.accept();
            if (m_stopping) {
                return;
            }
            forgetEndedVisits();
            if (!socket.is_open() || !begin(std::move(socket), accepted + 1)) {
                waitForRoom();
            } else {
                ++accepted;
            }
        }
    }

    // Without spare descriptors or threads, it would fail repeatedly until a session has released its own.
    void waitForRoom()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const unsigned running = m_running;
        m_changed.wait_for(lock, std::chrono::milliseconds(100),
                           [this, running] { return m_stopping || m_running < running; });
    }

    bool begin(asio::ip::tcp::socket socket, unsigned number)
    {
        Visit& visit = m_visits.emplace_back();
        auto held = std::make_shared<asio::ip::tcp::socket>(std::move(socket));
        // Held until the session counts, so that it cannot end before.
        const std::lock_guard<std::mutex> lock(m_mutex);
        try {
            visit.thread = std::thread([this, &visit, held, number] { receive(visit, std::move(*held), number); });
        } catch (const std::system_error&) {
            m_visits.pop_back();
            return false;
        }
        ++m_running;
        if (m_config.keepTranscripts) {
            m_transcripts.resize(number);
        }
        return true;
    }

    void receive(Visit& visit, asio::ip::tcp::socket socket, unsigned number)
    {
        blockSigpipe();
        const Shared shared{m_config,  m_storage,           m_meetingPoint,  m_times,
                            m_context, m_tls.control.get(), m_tls.data.get()};
        Transcript transcript;
        try {
            Session session(shared, std::move(socket), visit.sockets, number, transcript);
            session.run();
        } catch (const std::exception& error) {
            transcript.push_back(std::string("= the server failed: ") + error.what());
        }
        end(visit, std::move(transcript), number);
    }

    void end(Visit& visit, Transcript transcript, unsigned number)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_config.onSessionEnd) {
            m_config.onSessionEnd(transcript);
        }
        if (m_config.keepTranscripts) {
            m_transcripts[number - 1] = std::move(transcript);
        }
        --m_running;
        visit.over = true;
        m_changed.notify_all();
    }

    void forgetEndedVisits()
    {
        m_visits.remove_if([](Visit& visit) {
            if (visit.over) {
                visit.thread.join();
                return true;
            }
            return false;
        });
    }

    const ServerConfig m_config;
    const Storage m_storage;
    const TlsContexts m_tls;
    MeetingPoint m_meetingPoint;
    FileTimes m_times;
    asio::io_context m_context;
    Listener m_listener{m_context};
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping{false};
    std::thread m_accepting;
    std::list<Visit> m_visits; // the accepting thread's, until it has ended

    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_running = 0;
    std::vector<Transcript> m_transcripts;
};

FtpServer::FtpServer(const ServerConfig& config) : m_implementation(std::make_unique<Implementation>(config)) {}
FtpServer::~FtpServer() = default;

std::uint16_t FtpServer::port() const { return m_implementation->port(); }

std::vector<Transcript> FtpServer::transcripts() { return m_implementation->transcripts(); }

void FtpServer::stop() { m_implementation->stop(); }

} // namespace testserver
