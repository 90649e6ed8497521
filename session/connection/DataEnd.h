#ifndef SFTPCLIENT_SESSION_DATAEND_H
#define SFTPCLIENT_SESSION_DATAEND_H

#include <openssl/ssl.h>

namespace session {

/// How the data of a transfer ended. libcurl before 8.14 takes any end of a TLS connection for the end of the data,
/// also one that somebody on the way has brought about; only the server itself can send a close_notify.
class DataEnd
{
public:
    /// Watches the data connection that is made with this context; the last one, as that to a proxy is made before.
    /// REQUIRES: this object outlives the connection.
    void watch(SSL_CTX* context) noexcept;

    /// Whether the data came over TLS, and no close_notify behind it.
    bool isUnannounced() const { return m_isAwaited; }

private:
    static void notice(const SSL* connection, int event, int value) noexcept;

    bool m_isAwaited = false;
    const SSL_CTX* m_last = nullptr;
};

} // namespace session

#endif
