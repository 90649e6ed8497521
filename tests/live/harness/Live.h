#ifndef LIVE_HARNESS_LIVE_H
#define LIVE_HARNESS_LIVE_H

#include "harness/LiveHost.h"
#include "harness/Redirection.h"
#include "support/Lines.h"

#include <Certificates.h>
#include <FtpServer.h>
#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// The base of every live test: folders, a CA of its own, a request, and a server on demand. What libcurl prints by
/// itself goes into `out` and `err`.
class Live : public testing::Test
{
protected:
    Live();
    ~Live() override;

    /// Starts the server with `config` and aims the request at it.
    void serve();

    void stopServing() { m_server.reset(); }

    /// What the library's calls said to the server: the sessions since it was started.
    std::vector<testserver::Transcript> sessions() { return m_server->transcripts(); }

    /// "ftp://localhost:PORT" or "ftps://localhost:PORT", and the path.
    std::string url(const std::string& path) const;

    /// Lets libcurl trust this CA where the request's certificate does not count: size check and upload.
    void trustByDefault(const std::string& caPem);

    std::string served(const std::string& name) const { return m_folder + "/served/" + name; }
    std::string local(const std::string& name) const { return m_folder + "/local/" + name; }
    static std::string contentOf(const std::string& path);
    static void writeFile(const std::string& path, const std::string& content);
    static void makeSparse(const std::string& path, off_t size);
    static bool exists(const std::string& path);

    int testConnection();

    // Pieces of transcripts.
    static Lines greeting() { return {"< 220 ready"}; }
    static Lines tlsLogin();
    static Lines clearLogin();
    static Lines implicitLogin();
    static Lines goodbye() { return {"> QUIT", "< 221 goodbye"}; }
    static Lines names(const std::string& verb, std::size_t bytes);
    static Lines size(const std::string& name, const std::string& reply);

    testserver::CertificateAuthority authority;
    testserver::ServerConfig config;
    SFtpRequest request;
    SFtpClient facade;
    std::string errorText = "as it was";
    std::unique_ptr<Redirection> out;
    std::unique_ptr<Redirection> err;

private:
    std::string m_folder;
    std::unique_ptr<testserver::FtpServer> m_server;
};

#endif
