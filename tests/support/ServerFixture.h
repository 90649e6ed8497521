#ifndef SUPPORT_SERVERFIXTURE_H
#define SUPPORT_SERVERFIXTURE_H

#include "support/Lines.h"
#include "support/TemporaryFolder.h"

#include <Certificates.h>
#include <FtpServer.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// A test server on demand, with a folder and a CA of its own. libcurl is initialised for the whole program.
class ServerFixture : public testing::Test
{
protected:
    ServerFixture();
    ~ServerFixture() override;

    /// Starts the server with `config`.
    void serve();

    void stopServing() { server.reset(); }

    void misbehave(const std::string& fault) { config.faults.push_back(testserver::parseFault(fault)); }

    /// The transcripts of all sessions, when all clients have left.
    std::vector<Lines> sessions() { return server->transcripts(); }

    /// "ftp://localhost:PORT", or with ftps: for a server of implicit TLS, and the path.
    std::string url(const std::string& path) const { return urlAt(server->port(), path); }
    std::string urlAt(unsigned port, const std::string& path) const;

    // The files on both sides.
    std::string served(const std::string& name) const { return folder.file("served/" + name); }
    std::string local(const std::string& name) const { return folder.file("local/" + name); }
    static bool exists(const std::string& path);

    TemporaryFolder folder;
    testserver::CertificateAuthority authority;
    testserver::ServerConfig config;
    std::unique_ptr<testserver::FtpServer> server;
};

/// For EXPECT_TRUE: `sameLines` for the sessions of a server.
testing::AssertionResult sameSessions(const std::vector<Lines>& expected, const std::vector<Lines>& actual);

/// For EXPECT_TRUE: the bytes are the same. A failure says where they differ, without quoting them all.
testing::AssertionResult sameBytes(const std::string& expected, const std::string& actual);

#endif
