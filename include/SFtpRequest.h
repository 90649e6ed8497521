#ifndef SFTPCLIENT_SFTPREQUEST_H
#define SFTPCLIENT_SFTPREQUEST_H

#include <cstdint>
#include <string>

/// What one operation needs to know: the server, the login, the file.
///
/// A plain record that the host fills and owns. The library reads it during one call, never changes it and keeps no
/// reference to it afterwards. It must not change while a call that was given it is running. Any number of calls on any
/// number of threads may be given the same one at the same time.
///
/// Which operation reads which field:
///
///     field               download  rename  delete  list  upload  connection test
///     remotePath          yes       yes     yes     yes   yes     yes
///     remoteFileName      no        yes     yes     no    no      no
///     localPath           yes       yes     no      yes   yes     no
///     userName, password  yes       yes     yes     yes   yes     yes
///     caCert              yes       yes     yes     yes   no      yes
///     port                yes       yes     yes     yes   yes     yes
struct SFtpRequest
{
    /// The full URL, handed to libcurl as it stands: of the file for a download or an upload, of the directory for
    /// a listing, a rename or a delete. A directory's URL ends in "/". For rename and delete it names the port too
    /// ("ftp://host:21/dir/"), because the directory is what follows the first "/" after the last ":".
    std::string remotePath;

    /// Name of the file to rename or delete, relative to the directory of `remotePath`. No blanks, no line breaks:
    /// it becomes part of a command line.
    std::string remoteFileName;

    /// Download and list: the local file to write (created or emptied). Upload: the local file to read.
    /// Rename: the new name, relative to the directory of `remotePath`.
    std::string localPath;

    /// The user to log in as. A ":" in it cuts it short there, and what follows counts as part of the password.
    std::string userName;

    /// The password. The library wipes its own copy before a call returns; this one is the host's to wipe.
    std::string password;

    /// One CA certificate, as PEM text or as the bytes of its DER form, that is trusted besides libcurl's own trust
    /// store. The exact text "none" means that there is no certificate: the server is then not verified, if the
    /// host's configuration allows that (`CertAuthSwitch` of section `General` is 0).
    std::string caCert;

    /// The server's port, 1 to 65535; it overrides a port in `remotePath`. 0 leaves the choice to the URL; a number
    /// above 65535 is refused by libcurl, which then goes by the URL as well.
    uint32_t port = 0;
};

#endif
