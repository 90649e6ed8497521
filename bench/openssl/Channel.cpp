#include "Channel.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace {

void require(bool done, const std::string& what)
{
    if (!done) {
        throw std::runtime_error(what + " has failed");
    }
}

} // namespace

TlsContext::TlsContext(const std::string& caPem) : m_context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free)
{
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> bytes(
        BIO_new_mem_buf(caPem.data(), static_cast<int>(caPem.size())), BIO_free_all);
    const std::unique_ptr<X509, decltype(&X509_free)> ca(PEM_read_bio_X509(bytes.get(), nullptr, nullptr, nullptr),
                                                         X509_free);
    require(m_context && ca && X509_STORE_add_cert(SSL_CTX_get_cert_store(m_context.get()), ca.get()) == 1 &&
                SSL_CTX_set_max_proto_version(m_context.get(), TLS1_2_VERSION) == 1,
            "Making a TLS context");
    SSL_CTX_set_verify(m_context.get(), SSL_VERIFY_PEER, nullptr);
}

Channel::Channel(int port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), m_tls(nullptr, SSL_free)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int yes = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    require(connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "Connecting");
}

Channel::~Channel() { end(); }

void Channel::startTls(const TlsContext& context, const Channel* continued)
{
    m_tls.reset(SSL_new(context.get()));
    require(m_tls && SSL_set_fd(m_tls.get(), m_socket) == 1 && SSL_set1_host(m_tls.get(), "localhost") == 1,
            "Preparing TLS");
    if (continued != nullptr) {
        SSL_set_session(m_tls.get(), SSL_get0_session(continued->m_tls.get()));
    }
    require(SSL_connect(m_tls.get()) == 1, "The TLS handshake");
}

std::size_t Channel::read(char* bytes, std::size_t size)
{
    const int got =
        m_tls ? SSL_read(m_tls.get(), bytes, static_cast<int>(size)) : static_cast<int>(recv(m_socket, bytes, size, 0));
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

void Channel::write(const char* bytes, std::size_t size)
{
    const int count = static_cast<int>(size);
    require((m_tls ? SSL_write(m_tls.get(), bytes, count) : static_cast<int>(::send(m_socket, bytes, size, 0))) ==
                count,
            "Sending");
}

void Channel::end()
{
    if (m_tls) {
        SSL_shutdown(m_tls.get());
        m_tls.reset();
    }
    if (m_socket >= 0) {
        close(m_socket);
        m_socket = -1;
    }
}

std::string Channel::readLine()
{
    std::string line;
    for (char byte = 0; byte != '\n'; line += byte) {
        require(read(&byte, 1) == 1, "Reading a reply");
    }
    return line;
}

std::string Channel::expect(const std::string& code)
{
    std::string line = readLine();
    while (line.size() > 3 && line[3] != ' ') { // a reply of several lines
        line = readLine();
    }
    require(line.compare(0, 3, code) == 0, "The server's reply is " + line + "; what it belongs to");
    return line;
}

std::string Channel::ask(const std::string& command, const std::string& code)
{
    const std::string line = command + "\r\n";
    write(line.data(), line.size());
    return expect(code);
}
