#include "Server.h"

#include <algorithm>

namespace {

constexpr const char* kNoVerbs = "the server knows neither command, `rename` nor `rm`";
constexpr const char* kClearRefused =
    "the size check before a download (-1) and the upload log in without TLS, which this server refuses";

// What libcurl returns, in the order test, upload, list, download, rename, remove: 21 a refused command after the
// transfer, 64 no TLS where it is required, 67 a login refused with 530, 28 one refused with 421. -1 is the library's
// own, when the size check ends with any of these.
constexpr Six<int> kAll = {0, 0, 0, 0, 0, 0};
constexpr Six<int> kAllButTheVerbs = {0, 0, 0, 0, 21, 21};
constexpr Six<int> kTlsAtLogin = {0, 67, 0, -1, 21, 21};
constexpr Six<int> kTlsAtLoginBy421 = {0, 28, 0, -1, 21, 21};
constexpr Six<int> kOnlyInTheClear = {64, 0, 64, 64, 64, 64};

} // namespace

const std::vector<Server>& servers()
{
    static const std::vector<Server> all = {
        {"VsftpdExplicit", "vsftpd, explicit TLS", "vsftpd", "ftp", "/", Listing::Files, DataTls::SameSession,
         kAllButTheVerbs, kNoVerbs, vsftpdExplicit},
        {"VsftpdTlsAtLogin", "vsftpd, TLS required at login", "vsftpd", "ftp", "/", Listing::Files,
         DataTls::SameSession, kTlsAtLogin, std::string(kClearRefused) + "; " + kNoVerbs, vsftpdTlsAtLogin},
        {"VsftpdImplicit", "vsftpd, implicit TLS", "vsftpd", "ftps", "/", Listing::Files, DataTls::SameSession,
         kAllButTheVerbs, kNoVerbs, vsftpdImplicit},
        {"ProftpdExplicit", "ProFTPD, explicit TLS", "proftpd-core", "ftp", "/", Listing::Files, DataTls::SameSession,
         kAllButTheVerbs, kNoVerbs, proftpdExplicit},
        {"ProftpdTlsAtLogin", "ProFTPD, TLS required at login", "proftpd-core", "ftp", "/", Listing::Files,
         DataTls::SameSession, kTlsAtLogin, std::string(kClearRefused) + "; " + kNoVerbs, proftpdTlsAtLogin},
        {"ProftpdImplicit", "ProFTPD, implicit TLS", "proftpd-core", "ftps", "/", Listing::Files, DataTls::SameSession,
         kAllButTheVerbs, kNoVerbs, proftpdImplicit},
        {"ProftpdClear", "ProFTPD, no TLS", "proftpd-core", "ftp", "/", Listing::Files, DataTls::None, kOnlyInTheClear,
         "all but the upload insist on TLS; the download gets past its size check, which does not", proftpdClear},
        {"ProftpdSftp", "ProFTPD, SFTP (mod_sftp)", "proftpd-core", "sftp", "/", Listing::FilesAndDots, DataTls::None,
         kAll, "", proftpdSftp},
        {"PureFtpdExplicit", "Pure-FTPd, explicit TLS", "pure-ftpd", "ftp", "/", Listing::FilesAndDots,
         DataTls::AnySession, kAllButTheVerbs, kNoVerbs, pureFtpdExplicit},
        {"PureFtpdTlsAtLogin", "Pure-FTPd, TLS required at login", "pure-ftpd", "ftp", "/", Listing::FilesAndDots,
         DataTls::AnySession, kTlsAtLoginBy421,
         std::string(kClearRefused) + " with a 421: libcurl reports that as a time-out (28), at once; " + kNoVerbs,
         pureFtpdTlsAtLogin},
        {"OpensshSftp", "OpenSSH, SFTP (sftp-server)", "openssh-server", "sftp", "/run/served/", Listing::FilesAndDots,
         DataTls::None, kAll, "", opensshSftp},
    };
    return all;
}

const std::vector<Server>& limitedServers()
{
    static const std::vector<Server> all = {
        {"VsftpdLimited", "vsftpd, max_per_ip=1", "vsftpd", "ftp", "/", Listing::Files, DataTls::SameSession,
         kAllButTheVerbs, "", vsftpdLimited, true},
        {"PureFtpdLimited", "Pure-FTPd, -C 1", "pure-ftpd", "ftp", "/", Listing::FilesAndDots, DataTls::AnySession,
         kAllButTheVerbs, "", pureFtpdLimited, true},
    };
    return all;
}

const std::vector<Server>& sshServers()
{
    static const std::vector<Server> those = [] {
        std::vector<Server> all = servers();
        all.erase(std::remove_if(all.begin(), all.end(), [](const Server& each) { return each.scheme != "sftp"; }),
                  all.end());
        return all;
    }();
    return those;
}
