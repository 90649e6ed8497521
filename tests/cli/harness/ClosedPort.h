#ifndef SFTPCLIENT_TESTS_CLI_CLOSEDPORT_H
#define SFTPCLIENT_TESTS_CLI_CLOSEDPORT_H

#include <base/Descriptor.h>

#include <string>

/// A port of 127.0.0.1 that refuses connections as long as this object lives: it is taken, but nobody listens.
class ClosedPort
{
public:
    ClosedPort();

    /// "ftp://127.0.0.1:PORT".
    const std::string& url() const { return m_url; }

private:
    Descriptor m_socket;
    std::string m_url;
};

#endif
