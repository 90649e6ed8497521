#include "Server.h"

namespace {

constexpr const char* kNoVerbs = "the server knows neither command, `rename` nor `rm`";
constexpr const char* kClearRefused =
    "the size check before a download (-1) and the upload log in without TLS, which this server refuses";

// test, upload, list, download, rename, remove
constexpr Six<int> kAll = {0, 0, 0, 0, 0, 0};
constexpr Six<int> kAllButTheVerbs = {0, 0, 0, 0, 21, 21};
constexpr Six<int> kTlsAtLogin = {0, 67, 0, -1, 21, 21};
constexpr Six<int> kTlsAtLoginBy421 = {0, 28, 0, -1, 21, 21};
constexpr Six<int> kOnlyInTheClear = {64, 0, 64, 64, 64, 64};

} // namespace

const std::vector<Server>& servers()
{
    static const std::vector<Server> all = {
        {"VsftpdExplicit", "vsftpd, explicit TLS", "vsftpd", "ftp", "/", kAllButTheVerbs, kNoVerbs, vsftpdExplicit},
        {"VsftpdTlsAtLogin", "vsftpd, TLS required at login", "vsftpd", "ftp", "/", kTlsAtLogin,
         std::string(kClearRefused) + "; " + kNoVerbs, vsftpdTlsAtLogin},
        {"VsftpdImplicit", "vsftpd, implicit TLS", "vsftpd", "ftps", "/", kAllButTheVerbs, kNoVerbs, vsftpdImplicit},
        {"ProftpdExplicit", "ProFTPD, explicit TLS", "proftpd-core", "ftp", "/", kAllButTheVerbs, kNoVerbs,
         proftpdExplicit},
        {"ProftpdTlsAtLogin", "ProFTPD, TLS required at login", "proftpd-core", "ftp", "/", kTlsAtLogin,
         std::string(kClearRefused) + "; " + kNoVerbs, proftpdTlsAtLogin},
        {"ProftpdImplicit", "ProFTPD, implicit TLS", "proftpd-core", "ftps", "/", kAllButTheVerbs, kNoVerbs,
         proftpdImplicit},
        {"ProftpdClear", "ProFTPD, no TLS", "proftpd-core", "ftp", "/", kOnlyInTheClear,
         "all but the upload insist on TLS; the download gets past its size check, which does not", proftpdClear},
        {"ProftpdSftp", "ProFTPD, SFTP (mod_sftp)", "proftpd-core", "sftp", "/", kAll, "", proftpdSftp},
        {"PureFtpdExplicit", "Pure-FTPd, explicit TLS", "pure-ftpd", "ftp", "/", kAllButTheVerbs, kNoVerbs,
         pureFtpdExplicit},
        {"PureFtpdTlsAtLogin", "Pure-FTPd, TLS required at login", "pure-ftpd", "ftp", "/", kTlsAtLoginBy421,
         std::string(kClearRefused) + " with a 421: libcurl reports that as a time-out (28), at once; " + kNoVerbs,
         pureFtpdTlsAtLogin},
        {"OpensshSftp", "OpenSSH, SFTP (sftp-server)", "openssh-server", "sftp", "/srv/", kAll, "", opensshSftp},
    };
    return all;
}
