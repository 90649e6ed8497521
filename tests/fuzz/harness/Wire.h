#ifndef FUZZ_HARNESS_WIRE_H
#define FUZZ_HARNESS_WIRE_H

#include <OpenSslObjects.h>

#include <string>

/// The server's end of a connection, in the clear until TLS begins. Closes with the object.
class Wire
{
public:
    /// Takes ownership of the descriptor.
    explicit Wire(int descriptor);
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    /// Starts TLS. If the handshake fails, the connection is unusable.
    void beginTls(SSL_CTX* context);
    void send(const std::string& bytes);
    /// Shuts down sending.
    void finish();
    /// Reads what the client sends. False if it has closed the connection; silence does not count.
    bool hear();

private:
    bool readable() const;

    const int m_descriptor;
    testserver::Tls m_tls;
};

#endif
