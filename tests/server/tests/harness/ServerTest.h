#ifndef SERVERTEST_HARNESS_SERVERTEST_H
#define SERVERTEST_HARNESS_SERVERTEST_H

#include "harness/Folder.h"
#include "harness/RawClient.h"

#include <FtpServer.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/// A server on demand, with a folder and a CA of its own.
class ServerTest : public testing::Test
{
protected:
    ServerTest();
    ~ServerTest() override;

    void serve() { server = std::make_unique<testserver::FtpServer>(config); }
    void misbehave(const std::string& fault) { config.faults.push_back(testserver::parseFault(fault)); }

    /// A client that has logged in in the clear.
    std::unique_ptr<RawClient> login();

    /// What `login` left out of the one session's transcript.
    Lines afterLogin();

    std::filesystem::path served(const std::string& name) const { return config.root / name; }

    Folder folder;
    testserver::CertificateAuthority authority;
    testserver::ServerConfig config;
    std::unique_ptr<testserver::FtpServer> server;
};

#endif
