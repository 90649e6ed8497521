#ifndef FUZZ_HARNESS_WIRE_H
#define FUZZ_HARNESS_WIRE_H

#include <OpenSslObjects.h>

#include <string>

/// The server's end of a connection, in the clear until TLS begins. Waits for nothing, and leaves the thread's OpenSSL
/// errors, which are the client's, as they are. Closes with the object.
class Wire
{
public:
    /// Takes ownership of the descriptor.
    explicit Wire(int descriptor);
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    /// Starts TLS. `hear` continues the handshake.
    void beginTls(SSL_CTX* context);
    bool isInHandshake() const { return m_tls && SSL_is_init_finished(m_tls.get()) == 0; }

    void send(const std::string& bytes);
    /// Shuts down sending.
    void finish();
    /// What the client has sent since. `isOpen` is false afterwards if it has closed the connection, or TLS failed.
    std::string hear();
    bool isOpen() const { return m_isOpen; }

private:
    int read(char* into, int size);

    const int m_descriptor;
    testserver::Tls m_tls;
    bool m_isOpen = true;
};

#endif
