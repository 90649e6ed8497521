#include "Server.h"

#include <fstream>

// Passwords are checked by sshd itself against the shadow file that it sees; PAM has no part in it.
ProcessSetup opensshSftp(const std::string& folder)
{
    const std::string path = folder + "/daemon.conf";
    std::ofstream(path) << "HostKey " << folder << "/host_key\nUsePAM no\nPasswordAuthentication yes\n"
                        << "PubkeyAuthentication no\nUseDNS no\nPidFile none\nPrintMotd no\nPrintLastLog no\n"
                        << "Subsystem sftp /run/packages/openssh-sftp-server/usr/lib/openssh/sftp-server\n";
    return {{"/run/packages/openssh-server/usr/sbin/sshd", "-i", "-e", "-f", path}};
}
