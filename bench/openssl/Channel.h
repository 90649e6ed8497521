#ifndef BENCH_OPENSSL_CHANNEL_H
#define BENCH_OPENSSL_CHANNEL_H

#include <openssl/ssl.h>

#include <cstddef>
#include <memory>
#include <string>

/// TLS 1.2 with one trusted CA. Throws `std::runtime_error`, as all that follows.
class TlsContext
{
public:
    explicit TlsContext(const std::string& caPem);
    SSL_CTX* get() const { return m_context.get(); }

private:
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> m_context;
};

/// A connection to a port of this machine: in the clear, then over TLS.
class Channel
{
public:
    explicit Channel(int port);
    ~Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// `continued`: whose TLS session goes on here.
    void startTls(const TlsContext& context, const Channel* continued);

    /// Up to `size` bytes; 0 at the end.
    std::size_t read(char* bytes, std::size_t size);
    void write(const char* bytes, std::size_t size);

    /// Says that nothing more comes, and closes.
    void end();

    /// Reads a reply, which must begin with this code, and gives its last line.
    std::string expect(const std::string& code);
    std::string ask(const std::string& command, const std::string& code);

private:
    std::string readLine();

    int m_socket;
    std::unique_ptr<SSL, decltype(&SSL_free)> m_tls;
};

#endif
