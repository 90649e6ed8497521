#ifndef SUPPORT_HTTPPROXY_H
#define SUPPORT_HTTPPROXY_H

#include <Certificates.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

/// An HTTP proxy on 127.0.0.1, in a thread of its own, which carries out every CONNECT. The end of a server's
/// connection reaches the client as the proxy's own proper end.
class HttpProxy
{
public:
    /// `answers`: to the nth client (from 1), in place of "HTTP/1.1 200 OK", with line ends between lines; one that
    /// does not begin so ends the connection. `certificate`: clients are to come over TLS.
    explicit HttpProxy(std::map<unsigned, std::string> answers = {},
                       const std::optional<testserver::Certificate>& certificate = std::nullopt);
    ~HttpProxy();
    HttpProxy(const HttpProxy&) = delete;
    HttpProxy& operator=(const HttpProxy&) = delete;

    /// With "localhost", for which the certificates of tests are.
    std::string url() const;

    /// How many have connected.
    unsigned clients() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

#endif
