#ifndef SFTPCLIENT_TESTS_CLI_SERVED_H
#define SFTPCLIENT_TESTS_CLI_SERVED_H

#include "harness/RunCommand.h"

#include <Certificates.h>
#include <FtpServer.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// The base of every test that runs the command against a server: folders, a CA, a login, and a server on demand.
class Served : public testing::Test
{
protected:
    Served();
    ~Served() override;

    /// Starts the server with `config` and these faults.
    void serve(const std::vector<std::string>& faults = {});

    /// "ftp://backup@localhost:PORT", or with ftps: for a server of implicit TLS, and the path.
    std::string url(const std::string& path = "/") const;

    /// The same without the user.
    std::string plainUrl(const std::string& path = "/") const;

    /// Runs the command in the folder of the local files, with the CA and the password.
    CommandResult run(std::vector<std::string> form, Variables more = {}) const;

    /// `form` with the CA.
    std::vector<std::string> withCa(std::vector<std::string> form) const;

    /// The CA in place of the machine's trust store, which besides is slow to read.
    Variables trust() const;

    /// The same, and the password.
    Variables environment() const;

    std::vector<testserver::Transcript> sessions() { return m_server->transcripts(); }
    void stopServing() { m_server.reset(); }

    const std::string& folder() const { return m_folder; }
    std::string served(const std::string& name) const { return m_folder + "/served/" + name; }
    std::string local(const std::string& name) const { return m_folder + "/local/" + name; }
    static void writeFile(const std::string& path, const std::string& content);
    static bool exists(const std::string& path);

    testserver::ServerConfig config;

private:
    testserver::CertificateAuthority m_authority;
    std::string m_folder;
    std::unique_ptr<testserver::FtpServer> m_server;
};

/// The last line of `text`, without its end.
std::string lastLine(const std::string& text);

#endif
