#ifndef FUZZ_HARNESS_WIRE_H
#define FUZZ_HARNESS_WIRE_H

#include <OpenSslObjects.h>

#include <string>

/// The server's end of a connection, in the clear until TLS begins. Closes with the object.
class Wire
{
public:
    /// Takes the descriptor.
    explicit Wire(int descriptor);
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    /// What comes from now on is TLS. Where the client does not want any, the connection is of no more use.
    void beginTls(SSL_CTX* context);
    void send(const std::string& bytes);
    /// Ends the sending.
    void finish();
    /// Takes what the client says. False when it has left; silence is no leaving.
    bool hear();

private:
    bool readable() const;

    const int m_descriptor;
    testserver::Tls m_tls;
};

#endif
