// A server for as long as standard input stays open: one of Debian's daemons, which needs root, or the repository's
// own, also behind a line with latency. It serves FOLDER/served, over TLS that it demands at login, or over SSH. The
// CA's certificate is in FOLDER/certificates/ca.pem, the host key's line in FOLDER/known_hosts, the password of the
// user backup in FOLDER/password.

#include "Inetd.h"
#include "PrivateSystem.h"
#include "Server.h"

#include <support/Process.h>
#include <support/Relay.h>

#include <Certificates.h>
#include <FtpServer.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace std::chrono_literals;

void write(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream file(path);
    if (!(file << content).flush()) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
}

void makeHostKey(const std::string& path)
{
    Process keygen({{"ssh-keygen", "-q", "-t", "ecdsa", "-m", "PEM", "-N", "", "-f", path}});
    if (keygen.wait() != 0) {
        throw std::runtime_error("ssh-keygen made no host key: install openssh-client");
    }
}

// As ssh writes it for a port of its own: the file of the public key has the kind, the key and a remark.
std::string knownHost(const std::string& publicKey, std::uint16_t port)
{
    std::ifstream file(publicKey);
    std::string kind;
    std::string key;
    file >> kind >> key;
    return "[localhost]:" + std::to_string(port) + " " + kind + " " + key + "\n";
}

struct Daemon
{
    std::string package;
    ProcessSetup (*configure)(const std::string& folder);
};

const std::map<std::string, Daemon>& daemons()
{
    static const std::map<std::string, Daemon> kDaemons = {
        {"vsftpd", {"vsftpd", vsftpdAnySession}},         {"vsftpd-1.2", {"vsftpd", vsftpdTls12}},
        {"vsftpd-1.3", {"vsftpd", vsftpdTls13}},          {"vsftpd-implicit", {"vsftpd", vsftpdImplicitAnySession}},
        {"ProFTPD", {"proftpd-core", proftpdAnySession}}, {"Pure-FTPd", {"pure-ftpd", pureFtpdTlsAtLogin}},
        {"OpenSSH", {"openssh-server", opensshSftp}}};
    return kDaemons;
}

// Each way, so half of a round trip.
const std::map<std::string, std::chrono::milliseconds>& delays()
{
    static const std::map<std::string, std::chrono::milliseconds> kDelays = {{"test-server", {}},
                                                                             {"far-test-server", 25ms}};
    return kDelays;
}

const Daemon& daemonNamed(const std::string& name)
{
    const auto found = daemons().find(name);
    if (found == daemons().end()) {
        std::string text = "There is no server " + name + ", but:";
        for (const auto& each : daemons()) {
            text += " " + each.first;
        }
        for (const auto& each : delays()) {
            text += " " + each.first;
        }
        throw std::runtime_error(text);
    }
    if (!std::filesystem::exists(SERVERS_FOLDER "/" + found->second.package)) {
        throw std::runtime_error(name + " is not in " SERVERS_FOLDER ": run scripts/servers");
    }
    return found->second;
}

void writeLogin(const testserver::CertificateAuthority& authority, const std::string& folder)
{
    std::filesystem::create_directories(folder + "/certificates");
    write(folder + "/certificates/ca.pem", authority.certificatePem());
    write(folder + "/password", PrivateSystem::kPassword);
}

void announceAndWait(std::uint16_t port)
{
    std::cout << "listening on 127.0.0.1:" << port << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}

void serveBehindLine(std::chrono::milliseconds delay, const std::string& folder)
{
    const testserver::CertificateAuthority authority;
    std::optional<Relay> relay;
    testserver::ServerConfig config;
    if (delay.count() > 0) {
        Line line;
        line.delay = delay;
        relay.emplace(line);
        config.announcedPort = [&relay](std::uint16_t port) { return relay->before(port); };
    }
    config.root = folder + "/served";
    config.password = PrivateSystem::kPassword;
    config.tlsRequiredAtLogin = true;
    config.certificate = authority.issue();
    config.keepTranscripts = false;
    const testserver::FtpServer server(config);
    writeLogin(authority, folder);
    announceAndWait(relay ? relay->before(server.port()) : server.port());
}

void serve(const Daemon& which, const std::string& folder)
{
    const testserver::CertificateAuthority authority;
    const testserver::Certificate certificate = authority.issue();
    const std::string daemon = folder + "/daemon";
    std::filesystem::create_directories(daemon);
    writeLogin(authority, folder);
    write(daemon + "/cert.pem", certificate.certificatePem);
    write(daemon + "/key.pem", certificate.privateKeyPem);
    makeHostKey(daemon + "/host_key");
    ProcessSetup setup = which.configure(daemon);
    setup.environment.emplace_back("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
    setup.err = daemon + "/stderr.log";
    const Inetd inetd(PrivateSystem(daemon, folder + "/served", SERVERS_FOLDER), setup);
    write(folder + "/known_hosts", knownHost(daemon + "/host_key.pub", inetd.port()));
    announceAndWait(inetd.port());
}

} // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::cerr << "usage: bench-daemon SERVER FOLDER\n";
        return 2;
    }
    if (const auto delay = delays().find(argv[1]); delay != delays().end()) {
        serveBehindLine(delay->second, argv[2]);
    } else {
        serve(daemonNamed(argv[1]), argv[2]);
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "bench-daemon: " << error.what() << "\n";
    return 1;
}
