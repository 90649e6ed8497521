#include "FtpServer.h"

#include "Session.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <list>
#include <stdexcept>
#include <thread>

namespace testserver {

namespace asio = boost::asio;

namespace {

struct ContextRelease
{
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using TlsContext = std::unique_ptr<SSL_CTX, ContextRelease>;

struct BioRelease
{
    void operator()(BIO* memory) const { BIO_free(memory); }
};

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};

std::unique_ptr<BIO, BioRelease> readFrom(const std::string& text)
{
    return std::unique_ptr<BIO, BioRelease>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

TlsContext makeContext(const Certificate& certificate, const ServerConfig& config)
{
    TlsContext context(SSL_CTX_new(TLS_server_method()));
    const auto certMemory = readFrom(certificate.certificatePem);
    const auto keyMemory = readFrom(certificate.privateKeyPem);
    const std::unique_ptr<X509, Releaser<X509, X509_free>> cert(
        PEM_read_bio_X509(certMemory.get(), nullptr, nullptr, nullptr));
    const std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY, EVP_PKEY_free>> key(
        PEM_read_bio_PrivateKey(keyMemory.get(), nullptr, nullptr, nullptr));
    if (!context || !cert || !key || SSL_CTX_use_certificate(context.get(), cert.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
        throw std::runtime_error("The server's certificate and key cannot be used; both must be PEM and belong to "
                                 "each other.");
    }
    // Old versions are there only for those who ask for them.
    if (config.maxTlsVersion != 0 && config.maxTlsVersion < TLS1_2_VERSION) {
        SSL_CTX_set_security_level(context.get(), 0);
        SSL_CTX_set_min_proto_version(context.get(), config.maxTlsVersion);
    }
    if (config.minTlsVersion != 0) {
        SSL_CTX_set_min_proto_version(context.get(), config.minTlsVersion);
    }
    SSL_CTX_set_max_proto_version(context.get(), config.maxTlsVersion);
    static constexpr unsigned char kSessions[] = "ftp";
    SSL_CTX_set_session_id_context(context.get(), kSessions, sizeof(kSessions));
    return context;
}

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
        : m_config(config), m_storage(m_config.root),
          m_acceptor(m_context, {asio::ip::address_v4::loopback(), m_config.port})
    {
        m_acceptor.listen(asio::socket_base::max_listen_connections);
        if (m_config.tls != TlsMode::Plain) {
            m_controlTls = makeContext(m_config.certificate, m_config);
            m_dataTls = makeContext(m_config.dataCertificate.value_or(m_config.certificate), m_config);
        }
        m_port = m_acceptor.local_endpoint().port();
        m_accepting = std::thread([this] { accept(); });
    }

    ~Implementation() { stop(); }

    std::uint16_t port() const { return m_port; }

    std::vector<Transcript> transcripts()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_ended.wait(lock, [this] { return m_running == 0; });
        return m_transcripts;
    }

    void stop()
    {
        if (!m_accepting.joinable()) {
            return;
        }
        m_stopping = true;
        ::shutdown(m_acceptor.native_handle(), SHUT_RDWR);
        m_accepting.join();
        for (Visit& visit : m_visits) {
            visit.sockets.interrupt();
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
        for (unsigned number = 1;; ++number) {
            asio::ip::tcp::socket socket(m_context);
            boost::system::error_code failed;
            m_acceptor.accept(socket, failed);
            if (m_stopping) {
                return;
            }
            if (failed) {
                --number;
                continue;
            }
            forgetEndedVisits();
            begin(std::move(socket), number);
        }
    }

    void begin(asio::ip::tcp::socket socket, unsigned number)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            ++m_running;
            if (m_config.keepTranscripts) {
                m_transcripts.resize(number);
            }
        }
        Visit& visit = m_visits.emplace_back();
        auto held = std::make_shared<asio::ip::tcp::socket>(std::move(socket));
        visit.thread = std::thread([this, &visit, held, number] { receive(visit, std::move(*held), number); });
    }

    void receive(Visit& visit, asio::ip::tcp::socket socket, unsigned number)
    {
        blockSigpipe();
        const Shared shared{m_config, m_storage, m_context, m_controlTls.get(), m_dataTls.get()};
        Transcript transcript;
        try {
            Session session(shared, std::move(socket), visit.sockets, number);
            session.run();
            transcript = session.transcript();
        } catch (const std::exception& error) {
            transcript = {std::string("= the server failed: ") + error.what()};
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_config.onSessionEnd) {
            m_config.onSessionEnd(transcript);
        }
        if (m_config.keepTranscripts) {
            m_transcripts[number - 1] = std::move(transcript);
        }
        --m_running;
        m_ended.notify_all();
        visit.over = true;
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
    asio::io_context m_context;
    asio::ip::tcp::acceptor m_acceptor;
    TlsContext m_controlTls;
    TlsContext m_dataTls;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping{false};
    std::thread m_accepting;
    std::list<Visit> m_visits; // the accepting thread's, until it has ended

    std::mutex m_mutex;
    std::condition_variable m_ended;
    unsigned m_running = 0;
    std::vector<Transcript> m_transcripts;
};

FtpServer::FtpServer(const ServerConfig& config) : m_implementation(std::make_unique<Implementation>(config)) {}
FtpServer::~FtpServer() = default;

std::uint16_t FtpServer::port() const { return m_implementation->port(); }

std::vector<Transcript> FtpServer::transcripts() { return m_implementation->transcripts(); }

void FtpServer::stop() { m_implementation->stop(); }

} // namespace testserver
