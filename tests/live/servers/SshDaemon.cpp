#include "Server.h"

#include <filesystem>
#include <fstream>

// sshd itself checks passwords against the shadow file that it sees, without PAM.
ProcessSetup opensshSftp(const std::string& folder)
{
    const std::string path = folder + "/daemon.conf";
    std::ofstream(path) << "HostKey " << folder << "/host_key\nUsePAM no\nPasswordAuthentication yes\n"
                        << "PubkeyAuthentication no\nUseDNS no\nPidFile none\nPrintMotd no\nPrintLastLog no\n"
                        << "Subsystem sftp /run/packages/openssh-sftp-server/usr/lib/openssh/sftp-server\n";
    // OpenSSH 10, Debian 13's, has a program for each part of a session.
    if (std::filesystem::exists(SERVERS_FOLDER "/openssh-server/usr/lib/openssh/sshd-auth")) {
        std::ofstream(path, std::ios::app)
            << "SshdSessionPath /run/packages/openssh-server/usr/lib/openssh/sshd-session\n"
            << "SshdAuthPath /run/packages/openssh-server/usr/lib/openssh/sshd-auth\n";
    }
    return {{"/run/packages/openssh-server/usr/sbin/sshd", "-i", "-e", "-f", path}};
}
