#include "PrivateSystem.h"

#include <crypt.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace {

std::string hashed(const std::string& password)
{
    crypt_data data = {};
    const char* const hash = crypt_r(password.c_str(), "$5$rounds=1000$servers", &data);
    if (hash == nullptr || *hash == '*') {
        throw std::runtime_error("libcrypt cannot hash with SHA-256; Debian's can.");
    }
    return hash;
}

void require(bool done, const std::string& what)
{
    if (!done) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void bind(const std::string& source, const std::string& target)
{
    require(mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0,
            source + " cannot be mounted on " + target);
}

void makeEmpty(const std::string& target)
{
    require(mount("tmpfs", target.c_str(), "tmpfs", 0, "mode=0755") == 0, "No tmpfs can be mounted on " + target);
}

// What programs look up in /etc besides users; other settings of the machine do not matter here.
void copySettings(const std::string& target)
{
    namespace fs = std::filesystem;
    for (const char* const name : {"ld.so.cache", "nsswitch.conf", "hosts", "services", "protocols", "localtime",
                                   "security", "ssl/openssl.cnf"}) {
        const fs::path source = fs::path("/etc") / name;
        if (fs::exists(source)) {
            fs::create_directories((fs::path(target) / name).parent_path());
            fs::copy(source, fs::path(target) / name, fs::copy_options::recursive);
        }
    }
}

} // namespace

PrivateSystem::PrivateSystem(const std::string& folder, const std::string& served, const std::string& packages)
    : m_etc(folder + "/etc"), m_served(served), m_packages(packages)
{
    std::filesystem::create_directories(m_etc + "/pam.d");
    copySettings(m_etc);
    const std::string user(kUser);
    const std::string identifiers = std::to_string(kUserId) + ":" + std::to_string(kUserId);
    std::ofstream(m_etc + "/passwd") << "root:x:0:0:root:/root:/bin/sh\n"
                                     << "nobody:x:65534:65534:nobody:/nonexistent:/usr/sbin/nologin\n"
                                     << "sshd:x:2120:65534::/run/sshd:/usr/sbin/nologin\n"
                                     << user << ":x:" << identifiers << "::/run/served:/bin/sh\n";
    std::ofstream(m_etc + "/group") << "root:x:0:\nnogroup:x:65534:\n" << user << ":x:" << kUserId << ":\n";
    std::ofstream(m_etc + "/shadow") << "root:*:19000:0:99999:7:::\nnobody:*:19000:0:99999:7:::\n"
                                     << "sshd:*:19000:0:99999:7:::\n"
                                     << user << ":" << hashed(kPassword) << ":19000:0:99999:7:::\n";
    std::filesystem::permissions(m_etc + "/shadow", std::filesystem::perms::owner_read);
    std::ofstream(m_etc + "/pam.d/vsftpd") << "auth required pam_unix.so\naccount required pam_unix.so\n"
                                           << "session required pam_permit.so\n";
    require(chown(m_served.c_str(), kUserId, kUserId) == 0, m_served + " cannot be given to the daemon's user");
}

void PrivateSystem::enter() const
{
    require(unshare(CLONE_NEWNS) == 0,
            "No mount namespace can be had; run this as root, and with CAP_SYS_ADMIN, or switch the server off");
    require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "The mounts cannot be made private");
    // The folder and not its files: a file that the machine replaces, as its package manager does, would lose what is
    // mounted on it.
    bind(m_etc, "/etc");
    makeEmpty("/var/log");
    makeEmpty("/run");
    for (const char* const name : {"/run/sshd", "/run/empty", "/run/served", "/run/packages"}) {
        require(mkdir(name, 0755) == 0, std::string(name) + " cannot be made");
    }
    bind(m_served, "/run/served");
    bind(m_packages, "/run/packages");
}
