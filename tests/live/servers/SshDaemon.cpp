#include "Server.h"

#include <fstream>

// sshd itself checks passwords against the shadow file that it sees, without PAM.
ProcessSetup opensshSftp(const std::string& folder)
{
    const std::string path = folder + "/daemon.conf";
    std::ofstream(path) << "HostKey " << folder << "/host_key\nUsePAM no\nPasswordAuthentication yes\n"
                        << "PubkeyAuthentication no\nUseDNS no\nPidFile none\nPrintMotd no\nPrintLastLog no\n"
                        << "Subsystem sftp /run/packages/openssh-sftp-server/usr/lib/openssh/sftp-server\n";
    return {{"/run/packages/openssh-server/usr/sbin/sshd", "-i", "-e", "-f", path}};
}
