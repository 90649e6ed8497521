#include "RealServer.h"

#include "PrivateSystem.h"

#include "support/Process.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace {

constexpr const char* kOff = "SFTPCLIENT_SERVERS_OFF";

bool isSwitchedOff(const std::string& package)
{
    const char* const off = std::getenv(kOff);
    return off != nullptr && (" " + std::string(off) + " ").find(" " + package + " ") != std::string::npos;
}

} // namespace

void PrintTo(const Server& server, std::ostream* stream) { *stream << server.title; }

std::string idOf(const testing::TestParamInfo<Server>& of) { return of.param.id; }

void RealServer::SetUp()
{
    if (isSwitchedOff(server.package)) {
        GTEST_SKIP() << server.package << " is switched off by " << kOff << ".";
    }
    requireRunnable();
    if (!HasFatalFailure()) {
        start();
    }
}

RealServer::~RealServer()
{
    if (HasFailure()) {
        // Standard output is redirected; the base prints what went there.
        for (const char* const log : {"stderr.log", "system.log", "tls.log", "sftp.log"}) {
            if (exists(daemonFile(log))) {
                std::cout << server.title << ", " << log << ":\n" << contentOf(daemonFile(log)) << "\n";
            }
        }
    }
}

void RealServer::keep(const std::string& name, const std::string& content) const
{
    const std::filesystem::path path = served(name);
    std::filesystem::create_directories(path.parent_path());
    writeFile(path, content);
    for (const std::filesystem::path& each : {path.parent_path(), path}) {
        EXPECT_EQ(0, chown(each.c_str(), PrivateSystem::kUserId, PrivateSystem::kUserId));
    }
}

void RealServer::aimAt(const std::string& path)
{
    request.remotePath = server.scheme + "://localhost:" + std::to_string(request.port) + server.root + path;
    request.localPath = local("file");
}

void RealServer::requireRunnable() const
{
    const std::string otherwise =
        std::string(", or put ") + server.package + " into the variable " + kOff + " to do without it.";
    ASSERT_TRUE(exists(std::string(SERVERS_FOLDER) + "/" + server.package))
        << server.package << " is not in " << SERVERS_FOLDER << ": run scripts/servers" << otherwise;
    ASSERT_EQ(0U, geteuid()) << server.package << " needs root, to change to the user who logs in and to see a system "
                             << "of its own: run this as root" << otherwise;
}

void RealServer::start()
{
    std::filesystem::create_directory(daemonFile(""));
    writeFile(daemonFile("cert.pem"), config.certificate.certificatePem);
    writeFile(daemonFile("key.pem"), config.certificate.privateKeyPem);
    if (server.scheme == "sftp") {
        makeHostKey();
    }
    trustByDefault(authority.certificatePem());
    request.userName = PrivateSystem::kUser;
    request.password = PrivateSystem::kPassword;
    ProcessSetup daemon = server.configure(daemonFile(""));
    if (speaksNewestTls) {
        const auto limits = [](const auto& variable) { return variable.first == "OPENSSL_CONF"; };
        daemon.environment.erase(std::remove_if(daemon.environment.begin(), daemon.environment.end(), limits),
                                 daemon.environment.end());
    }
    daemon.environment.emplace_back("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
    daemon.err = daemonFile("stderr.log");
    m_daemon =
        std::make_unique<Inetd>(PrivateSystem(daemonFile(""), served(""), SERVERS_FOLDER), daemon, server.listens);
    request.port = m_daemon->port();
}

void RealServer::makeHostKey() const
{
    Process keygen({{"ssh-keygen", "-q", "-t", "ecdsa", "-m", "PEM", "-N", "", "-f", daemonFile("host_key")}});
    ASSERT_EQ(0, keygen.wait()) << "ssh-keygen made no host key; install openssh-client.";
}
