#ifndef SUPPORT_LIVE_H
#define SUPPORT_LIVE_H

#include "support/LiveHost.h"
#include "support/Redirection.h"
#include "support/ServerFixture.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>
#include <curl/curl.h>

#include <memory>
#include <string>
#include <vector>

/// The base of every live test: a server on demand, and a request for it. What libcurl prints by itself goes into `out`
/// and `err`.
class Live : public ServerFixture
{
protected:
    Live();
    ~Live() override;

    /// Starts the server with `config` and aims the request at it.
    void serve();

    /// The server that the request is aimed at, and the path.
    std::string url(const std::string& path) const { return urlAt(request.port, path); }

    /// The request, aimed at another path and a local file.
    SFtpRequest requestFor(const std::string& path, const std::string& localName = "file") const;

    /// Lets libcurl trust this CA where the request's certificate is ignored: size check and upload.
    void trustByDefault(const std::string& caPem);

    static void makeSparse(const std::string& path, off_t size);

    int testConnection();

    // Pieces of transcripts.
    static Lines greeting() { return {"< 220 ready"}; }
    static Lines tlsLogin();
    static Lines clearLogin();
    static Lines implicitLogin();
    static Lines quit() { return {"> QUIT", "< 221 goodbye"}; }
    static Lines names(const std::string& verb, std::size_t bytes);
    static Lines size(const std::string& name, const std::string& reply);

    SFtpRequest request;
    SFtpClient facade;
    std::string errorText = "as it was";
    std::unique_ptr<Redirection> out;
    std::unique_ptr<Redirection> err;
};

#endif
