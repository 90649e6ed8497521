// One of Debian's daemons, for as long as standard input stays open: it serves FOLDER/served, over explicit TLS that it
// demands at login, or over SSH. The CA's certificate is in FOLDER/certificates/ca.pem, the host key's line in
// FOLDER/known_hosts, the password of the user backup in FOLDER/password. Needs root.

#include "Inetd.h"
#include "PrivateSystem.h"
#include "Server.h"

#include <support/Process.h>

#include <Certificates.h>

#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>

namespace {

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

const Daemon& daemonNamed(const std::string& name)
{
    static const std::map<std::string, Daemon> kDaemons = {{"vsftpd", {"vsftpd", vsftpdAnySession}},
                                                           {"ProFTPD", {"proftpd-core", proftpdAnySession}},
                                                           {"OpenSSH", {"openssh-server", opensshSftp}}};
    const auto found = kDaemons.find(name);
    if (found == kDaemons.end()) {
        throw std::runtime_error("There is no daemon " + name + ", but vsftpd, ProFTPD and OpenSSH.");
    }
    if (!std::filesystem::exists(SERVERS_FOLDER "/" + found->second.package)) {
        throw std::runtime_error(name + " is not in " SERVERS_FOLDER ": run scripts/servers");
    }
    return found->second;
}

void serve(const Daemon& which, const std::string& folder)
{
    const testserver::CertificateAuthority authority;
    const testserver::Certificate certificate = authority.issue();
    const std::string daemon = folder + "/daemon";
    std::filesystem::create_directories(daemon);
    std::filesystem::create_directories(folder + "/certificates");
    write(folder + "/certificates/ca.pem", authority.certificatePem());
    write(folder + "/password", PrivateSystem::kPassword);
    write(daemon + "/cert.pem", certificate.certificatePem);
    write(daemon + "/key.pem", certificate.privateKeyPem);
    makeHostKey(daemon + "/host_key");
    ProcessSetup setup = which.configure(daemon);
    setup.environment.emplace_back("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
    setup.err = daemon + "/stderr.log";
    const Inetd inetd(PrivateSystem(daemon, folder + "/served", SERVERS_FOLDER), setup);
    write(folder + "/known_hosts", knownHost(daemon + "/host_key.pub", inetd.port()));
    std::cout << "listening on 127.0.0.1:" << inetd.port() << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}

} // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::cerr << "usage: bench-daemon vsftpd|ProFTPD|OpenSSH FOLDER\n";
        return 2;
    }
    serve(daemonNamed(argv[1]), argv[2]);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "bench-daemon: " << error.what() << "\n";
    return 1;
}
