#include "support/HttpProxy.h"

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>

#include <array>
#include <atomic>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using boost::asio::ip::tcp;
using Failed = boost::system::error_code;
using Tls = boost::asio::ssl::stream<tcp::socket>;
using Context = boost::asio::ssl::context;

constexpr std::string_view kCarriedOut = "HTTP/1.1 200 OK";

/// One client, and the server that it asked for. Lives as long as something is under way.
template <typename Stream>
class Tunnel : public std::enable_shared_from_this<Tunnel<Stream>>
{
public:
    Tunnel(Stream client, boost::asio::io_context& context, std::string answer)
        : m_client(std::move(client)), m_server(context), m_resolver(context), m_answer(std::move(answer))
    {
    }

    void start()
    {
        if constexpr (std::is_same_v<Stream, Tls>) {
            m_client.async_handshake(Tls::server, then([this](std::size_t) { readRequest(); }));
        } else {
            readRequest();
        }
    }

private:
    // The next step, unless this one failed.
    template <typename Step>
    auto then(Step step)
    {
        return [self = this->shared_from_this(), step](const Failed& failed, auto&&... count) {
            if (!failed) {
                step(static_cast<std::size_t>((0U + ... + count)));
            }
        };
    }

    void readRequest()
    {
        boost::asio::async_read_until(m_client, boost::asio::dynamic_buffer(m_request), "\r\n\r\n",
                                      then([this](std::size_t) { connect(); }));
    }

    // "CONNECT HOST:PORT HTTP/1.1"
    void connect()
    {
        const std::size_t host = m_request.find(' ') + 1;
        const std::size_t end = m_request.find(' ', host);
        const std::size_t port = m_request.rfind(':', end) + 1;
        if (m_answer.compare(0, kCarriedOut.size(), kCarriedOut) != 0) {
            answer([this] { close(); });
            return;
        }
        Failed failed;
        const auto found =
            m_resolver.resolve(m_request.substr(host, port - 1 - host), m_request.substr(port, end - port), failed);
        boost::asio::connect(m_server, found, failed);
        answer([this] {
            receive(m_client, m_server, m_sent);
            receive(m_server, m_client, m_received);
        });
    }

    template <typename Step>
    void answer(Step step)
    {
        boost::asio::async_write(m_client, boost::asio::buffer(m_answer), then([step](std::size_t) { step(); }));
    }

    template <typename From, typename To>
    void receive(From& from, To& to, std::array<char, 16384>& bytes)
    {
        from.async_read_some(boost::asio::buffer(bytes), [self = this->shared_from_this(), &from, &to,
                                                          &bytes](const Failed& failed, std::size_t count) {
            if (failed) {
                self->close();
                return;
            }
            boost::asio::async_write(
                to, boost::asio::buffer(bytes, count),
                self->then([self, &from, &to, &bytes](std::size_t) { self->receive(from, to, bytes); }));
        });
    }

    void close()
    {
        Failed ignored;
        m_server.close(ignored);
        if constexpr (std::is_same_v<Stream, Tls>) {
            m_client.async_shutdown([self = this->shared_from_this()](const Failed&) {
                Failed unimportant;
                self->m_client.lowest_layer().close(unimportant);
            });
        } else {
            m_client.close(ignored);
        }
    }

    Stream m_client;
    tcp::socket m_server;
    tcp::resolver m_resolver;
    std::string m_request;
    std::string m_answer;
    std::array<char, 16384> m_sent;
    std::array<char, 16384> m_received;
};

} // namespace

class HttpProxy::Implementation
{
public:
    Implementation(std::map<unsigned, std::string> answers, const std::optional<testserver::Certificate>& certificate)
        : m_answers(std::move(answers)), m_acceptor(m_context, {boost::asio::ip::address_v4::loopback(), 0})
    {
        if (certificate) {
            m_tls.emplace(Context::tls_server);
            m_tls->use_certificate_chain(boost::asio::buffer(certificate->certificatePem));
            m_tls->use_private_key(boost::asio::buffer(certificate->privateKeyPem), Context::pem);
        }
        accept();
        m_thread = std::thread([this] { m_context.run(); });
    }

    ~Implementation()
    {
        m_context.stop();
        m_thread.join();
    }

    std::string url() const
    {
        return (m_tls ? "https" : "http") + std::string("://localhost:") +
               std::to_string(m_acceptor.local_endpoint().port());
    }

    unsigned clients() const { return m_clients; }

private:
    void accept()
    {
        m_acceptor.async_accept([this](const Failed& failed, tcp::socket socket) {
            if (!failed) {
                serve(std::move(socket));
                accept();
            }
        });
    }

    void serve(tcp::socket socket)
    {
        const auto found = m_answers.find(++m_clients);
        const std::string answer = (found == m_answers.end() ? std::string(kCarriedOut) : found->second) + "\r\n\r\n";
        if (m_tls) {
            std::make_shared<Tunnel<Tls>>(Tls(std::move(socket), *m_tls), m_context, answer)->start();
        } else {
            std::make_shared<Tunnel<tcp::socket>>(std::move(socket), m_context, answer)->start();
        }
    }

    std::map<unsigned, std::string> m_answers;
    std::optional<Context> m_tls; // outlives the tunnels
    boost::asio::io_context m_context;
    tcp::acceptor m_acceptor;
    std::atomic<unsigned> m_clients = 0;
    std::thread m_thread;
};

HttpProxy::HttpProxy(std::map<unsigned, std::string> answers, const std::optional<testserver::Certificate>& certificate)
    : m_implementation(std::make_unique<Implementation>(std::move(answers), certificate))
{
}

HttpProxy::~HttpProxy() = default;

std::string HttpProxy::url() const { return m_implementation->url(); }

unsigned HttpProxy::clients() const { return m_implementation->clients(); }
