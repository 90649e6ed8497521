#include "Server.h"

#include <fstream>
#include <utility>

// Data ports: none of these daemons is given a range, so each takes one that is free.
// No daemon writes a log of its own into the system, a pid file or a list of who is logged in.

namespace {

std::string writeConfiguration(const std::string& folder, const std::string& text)
{
    std::string path = folder + "/daemon.conf";
    std::ofstream(path) << text;
    return path;
}

// By OpenSSL's configuration, because vsftpd has no setting for it.
ProcessSetup withTls(ProcessSetup start, const std::string& folder, const std::string& limit)
{
    const std::string path = folder + "/openssl.cnf";
    std::ofstream(path) << "openssl_conf = openssl\n[openssl]\nssl_conf = ssl\n[ssl]\nsystem_default = limits\n"
                        << "[limits]\n"
                        << limit << "\n";
    start.environment.emplace_back("OPENSSL_CONF", path);
    return start;
}

// Debian 12's libcurl does not wait for the server to close a data connection, and with TLS 1.3 the end of an upload
// can be lost because of that. If the test uploads over TLS, the server is therefore limited to TLS 1.2.
ProcessSetup withTls12(ProcessSetup start, const std::string& folder)
{
    return withTls(std::move(start), folder, "MaxProtocol = TLSv1.2");
}

ProcessSetup vsftpd(const std::string& folder, const std::string& settings)
{
    const std::string configuration = "listen=NO\nbackground=NO\nanonymous_enable=NO\nlocal_enable=YES\n"
                                      "write_enable=YES\nchroot_local_user=YES\nallow_writeable_chroot=YES\n"
                                      "pam_service_name=vsftpd\nnopriv_user=nobody\nsecure_chroot_dir=/run/empty\n"
                                      "xferlog_enable=NO\nssl_enable=YES\nrequire_ssl_reuse=YES\nssl_ciphers=HIGH\n"
                                      "rsa_cert_file=" +
                                      folder + "/cert.pem\nrsa_private_key_file=" + folder + "/key.pem\n" + settings;
    return {{"/run/packages/vsftpd/usr/sbin/vsftpd", writeConfiguration(folder, configuration)}};
}

ProcessSetup proftpd(const std::string& folder, const std::string& settings)
{
    const std::string configuration =
        "ServerType inetd\nServerName test\nUser nobody\nGroup nogroup\n"
        "DefaultAddress 127.0.0.1\nUseReverseDNS off\nUseIPv6 off\nRequireValidShell off\nUseFtpUsers off\n"
        "DefaultRoot ~\nWtmpLog off\nTransferLog none\nSystemLog " +
        folder + "/system.log\nScoreboardFile " + folder +
        "/scoreboard\n<IfModule !mod_xfer.c>\nModulePath /run/packages/proftpd-core/usr/lib/proftpd\n"
        "LoadModule mod_xfer.c\nLoadModule mod_ls.c\n</IfModule>\n"
        "ModulePath /run/packages/proftpd-mod-crypto/usr/lib/proftpd\n"
        "AuthOrder mod_auth_unix.c\nAuthPAM off\n<IfModule mod_delay.c>\nDelayEngine off\n</IfModule>\n" +
        settings;
    return {{"/run/packages/proftpd-core/usr/sbin/proftpd", "--config", writeConfiguration(folder, configuration)}};
}

std::string proftpdTls(const std::string& folder, const std::string& settings)
{
    return "LoadModule mod_tls.c\nTLSEngine on\nTLSLog " + folder + "/tls.log\nTLSECCertificateFile " + folder +
           "/cert.pem\nTLSECCertificateKeyFile " + folder + "/key.pem\n" + settings;
}

ProcessSetup pureFtpd(const std::string& folder, const std::string& tls)
{
    return {{"/run/packages/pure-ftpd/usr/sbin/pure-ftpd", "--login", "unix", "--noanonymous", "--chrooteveryone",
             "--dontresolve", "--minuid", "1", "--syslogfacility", "none", "--tls", tls, "--certfile",
             folder + "/cert.pem," + folder + "/key.pem"}};
}

} // namespace

ProcessSetup vsftpdExplicit(const std::string& folder)
{
    return vsftpd(folder, "force_local_logins_ssl=NO\nforce_local_data_ssl=NO\n");
}

ProcessSetup vsftpdTlsAtLogin(const std::string& folder)
{
    return vsftpd(folder, "force_local_logins_ssl=YES\nforce_local_data_ssl=YES\n");
}

ProcessSetup vsftpdAnySession(const std::string& folder)
{
    return vsftpd(folder, "force_local_logins_ssl=YES\nforce_local_data_ssl=YES\nrequire_ssl_reuse=NO\n");
}

ProcessSetup vsftpdTls12(const std::string& folder) { return withTls12(vsftpdAnySession(folder), folder); }

ProcessSetup vsftpdTls13(const std::string& folder)
{
    return withTls(vsftpdAnySession(folder), folder, "MinProtocol = TLSv1.3");
}

ProcessSetup vsftpdImplicitAnySession(const std::string& folder)
{
    return withTls12(vsftpd(folder, "implicit_ssl=YES\nforce_local_logins_ssl=YES\nforce_local_data_ssl=YES\n"
                                    "require_ssl_reuse=NO\n"),
                     folder);
}

ProcessSetup vsftpdImplicit(const std::string& folder)
{
    return withTls12(vsftpd(folder, "implicit_ssl=YES\nforce_local_logins_ssl=YES\nforce_local_data_ssl=YES\n"),
                     folder);
}

ProcessSetup proftpdExplicit(const std::string& folder)
{
    return proftpd(folder, proftpdTls(folder, "TLSRequired off\n"));
}

ProcessSetup proftpdTlsAtLogin(const std::string& folder)
{
    return proftpd(folder, proftpdTls(folder, "TLSRequired on\n"));
}

ProcessSetup proftpdAnySession(const std::string& folder)
{
    return proftpd(folder,
                   proftpdTls(folder, "TLSRequired on\nTLSOptions NoSessionReuseRequired\n") + "AllowOverwrite on\n");
}

ProcessSetup proftpdImplicit(const std::string& folder)
{
    return withTls12(proftpd(folder, proftpdTls(folder, "TLSRequired on\nTLSOptions UseImplicitSSL\n")), folder);
}

ProcessSetup proftpdClear(const std::string& folder) { return proftpd(folder, ""); }

ProcessSetup proftpdSftp(const std::string& folder)
{
    return proftpd(folder, "LoadModule mod_sftp.c\nSFTPEngine on\nSFTPAuthMethods password\nSFTPLog " + folder +
                               "/sftp.log\nSFTPHostKey " + folder + "/host_key\n");
}

ProcessSetup pureFtpdExplicit(const std::string& folder) { return pureFtpd(folder, "1"); }

ProcessSetup pureFtpdTlsAtLogin(const std::string& folder) { return pureFtpd(folder, "2"); }

ProcessSetup vsftpdLimited(const std::string& folder)
{
    return vsftpd(folder, "force_local_logins_ssl=NO\nforce_local_data_ssl=NO\nlisten=YES\nlisten_ipv6=NO\n"
                          "isolate=NO\nisolate_network=NO\nmax_per_ip=1\n");
}

ProcessSetup pureFtpdLimited(const std::string& folder)
{
    ProcessSetup daemon = pureFtpd(folder, "1");
    daemon.words.insert(daemon.words.end(), {"--ipv4only", "--maxclientsperip", "1"});
    return daemon;
}
