#ifndef TESTSERVER_TLSCONTEXTS_H
#define TESTSERVER_TLSCONTEXTS_H

#include "FtpServer.h"
#include "OpenSslObjects.h"

namespace testserver {

/// The TLS settings of a server's connections; both null when the server is plain. Throws `std::runtime_error` when
/// a certificate cannot be used.
struct TlsContexts
{
    explicit TlsContexts(const ServerConfig& config);

    TlsContext control;
    TlsContext data;
};

} // namespace testserver

#endif
