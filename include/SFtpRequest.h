#ifndef SFTPCLIENT_SFTPREQUEST_H
#define SFTPCLIENT_SFTPREQUEST_H

#include <cstdint>
#include <string>

/// The parameters of one operation: the server, the login, the file.
///
/// A plain record that the host fills and owns. The library only reads it, and keeps no reference to it after the call.
/// It must not change while a call that uses it is running. Any number of calls on any number of threads may use the
/// same one at the same time.
///
/// Which operation of `SFtpClient` reads which field (in `SFtpSession`, `caCert` counts for uploads, too, no URL needs
/// a port, and names may hold blanks):
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
    /// The full URL, passed to libcurl unchanged: of the file for a download or an upload, of the directory for a
    /// listing, a rename or a delete. A directory's URL ends in "/". For rename and delete it includes the port
    /// ("ftp://host:21/dir/"), because the directory is the part from the first "/" after the last ":".
    std::string remotePath;

    /// Name of the file to rename or delete, relative to the directory of `remotePath`. No blanks, no line breaks:
    /// it becomes part of a command line.
    std::string remoteFileName;

    /// Download and list: the local file to write (created or emptied). Upload: the local file to read.
    /// Rename: the new name, relative to the directory of `remotePath`.
    std::string localPath;

    /// The user to log in as. A ":" in it ends it there, and the rest becomes part of the password.
    std::string userName;

    /// The password. The library wipes its own copy before a call returns; this one is the host's to wipe.
    std::string password;

    /// One CA certificate, as PEM text or as the bytes of its DER form, trusted besides libcurl's own trust store. The
    /// exact text "none" stands for no certificate: the server is then not verified, if the host's configuration allows
    /// that (`CertAuthSwitch` in section `General` is 0).
    std::string caCert;

    /// The server's port, 1 to 65535; it overrides a port in `remotePath`. 0 leaves the choice to the URL; so does a
    /// number above 65535, which libcurl refuses.
    uint32_t port = 0;
};

#endif
