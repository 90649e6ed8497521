#ifndef SFTPCLIENT_SFTPCLIENT_H
#define SFTPCLIENT_SFTPCLIENT_H

#include "SFtpRequest.h"

#include <string>

class ISFtpClient;

/// The host's entry point: five blocking operations between local files and a remote file server.
///
/// Every operation runs on the caller's thread and returns
///   0    success; `errorText` is left as it was,
///   -1   the library could not run it; `errorText` is left as it was and a log record says why,
///   else libcurl's result code (9 is reported as 78); `errorText` is replaced by libcurl's text for it (of a 9 that is
///        reported as 78, the text of 9).
/// Of the library itself only `std::bad_alloc` is thrown. What the host's services throw passes, but from within a TLS
/// handshake: the certificate hook, whose records say that `caCert` cannot be read or is not taken, makes 2 of what
/// derives from `std::exception`, and nothing else may be thrown there.
///
/// Threads: one object may be used from many threads at the same time; do not destroy it while a call runs. Many calls
/// may also be given the same request at the same time, for it is only read; each needs an `errorText` of its own. What
/// calls print on standard output and standard error interleaves.
///
/// Signals: the library sends none and installs no handler. The upload leaves SIGPIPE alone; the listing, the rename,
/// the delete and the size check, and so the download, let libcurl set it aside for the whole process while they run. A
/// host ignores SIGPIPE itself, once, before its first thread.
///
/// OpenSSL: a failed handshake and a `caCert` that cannot be read (60 and 77 among the results) leave their errors in
/// OpenSSL's queue of the calling thread. A host with TLS connections of its own on that thread calls
/// `ERR_clear_error()` after a failed call; else `SSL_get_error` takes these errors for theirs.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services
/// (platform/); the request stays unchanged until the call returns.
class __attribute__((visibility("default"))) SFtpClient
{
public:
    /// Where the client below could not be made, a record says so and every operation answers -1. Throws
    /// `std::bad_alloc` where memory does not even suffice for that record, and what the host's log throws at it.
    SFtpClient();

    /// REQUIRES: no call running on it.
    virtual ~SFtpClient();

    /// Copies would give the same client back twice.
    SFtpClient(const SFtpClient&) = delete;
    SFtpClient& operator=(const SFtpClient&) = delete;

    /// Writes the names in the directory `remotePath` to the local file `localPath`, one a line, unchecked: what the
    /// server sent, as libcurl delivers it (which ends lines with LF, whatever the server does). The local file is
    /// created or emptied before the server is asked; a failure leaves in it what had arrived. Waits up to 90 seconds
    /// for each reply of an FTP server; connecting may take as long as libcurl allows (300 seconds).
    virtual int Listsftpdir(const SFtpRequest& request, std::string& errorText);

    /// Fetches the file `remotePath` into `localPath`, after `CheckFileSizeBeforeDownload`: when that refuses, the
    /// result is -1 and the local file is not touched. Otherwise it is created or emptied before the transfer starts,
    /// and a failure leaves in it what had arrived. Connecting may take 20 seconds for the transfer, and for the check
    /// before it, 300.
    /// 2 means mostly that the local file could not be opened.
    virtual int DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText);

    /// Renames the remote file `remoteFileName` to `localPath`, both relative to the directory `remotePath`. The
    /// directory's listing goes to the process's standard output.
    /// REQUIRES: `remotePath` names a port and ends in "/"; the server knows the command "rename OLD NEW", or the URL
    /// is sftp:.
    virtual int ReNameSFtpFile(const SFtpRequest& request, std::string& errorText);

    /// Deletes the remote file `remoteFileName` of the directory `remotePath`.
    /// REQUIRES: `remotePath` names a port and ends in "/"; the server knows the command "rm PATH", or the URL is
    /// sftp:.
    virtual int DelSFtpFile(const SFtpRequest& request, std::string& errorText);

    /// Sends the local file `localPath` to `remotePath`, creating missing remote directories. `caCert` is not used and
    /// no TLS setting is made: with an ftp: URL login and data go in the clear, with an ftps: URL the server is
    /// verified against libcurl's own trust store. Connecting may take up to 20 seconds.
    /// 2 means that the local file could not be opened or measured.
    /// REQUIRES: a regular file that stays as it is. Of one that becomes shorter meanwhile what is left is sent; of a
    /// directory nothing; of a pipe or a device, which tells no size, all that it gives, without end for /dev/zero.
    /// Over FTP that is 18 (0 if it gave nothing, as /dev/null). Over SSH it is 0, and of a pipe or a device mostly
    /// only the first 65536 bytes are sent.
    virtual int UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText);

    /// Asks the server for the size of `remotePath`. True when a download may go on: libcurl tells a size, and it is
    /// below the limit (104857600 bytes for a local file named "RetentionDB.db", 53687091200 bytes for any other), or
    /// there is no such remote file, so that the download itself can report it. False otherwise; a record says why. Of
    /// `localPath` only the name counts. Connecting, and each reply of the server, may take as long as libcurl allows
    /// (300 and 120 seconds).
    ///
    /// The check runs without the library's TLS step: with an ftp: URL it logs in in the clear, with an ftps: URL the
    /// server is verified against libcurl's own trust store. libcurl's trace of it, with the password, goes to the
    /// process's standard error, and header lines go to its standard output; with an sftp: URL there are no header
    /// lines, and no password.
    bool CheckFileSizeBeforeDownload(const SFtpRequest& request);

private:
    ISFtpClient* client;
};

#endif
