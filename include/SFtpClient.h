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
///   any other value: libcurl's result code (9 is reported as 78); `errorText` is replaced by libcurl's text for it
///        (for a 9 that is reported as 78, the text of 9).
/// The library itself throws only `std::bad_alloc`. What the host's services throw passes to the caller, except during
/// a TLS handshake: the certificate hook, whose records say that `caCert` is unreadable or rejected, turns exceptions
/// derived from `std::exception` into result 2, and no others may be thrown there.
///
/// Threads: one object may be used from many threads at the same time; do not destroy it while a call runs. Many calls
/// may also share a request at the same time, because it is only read; each needs an `errorText` of its own. What calls
/// print on standard output and standard error interleaves.
///
/// Signals: the library sends none and installs no handler. The upload does not touch SIGPIPE; the listing, the rename,
/// the delete and the size check, and so the download, let libcurl ignore it for the whole process while they run. A
/// host ignores SIGPIPE itself, once, before its first thread.
///
/// OpenSSL: a failed handshake and an unreadable `caCert` (results 60 and 77 among others) leave their errors in the
/// calling thread's OpenSSL error queue. A host with TLS connections of its own on that thread calls
/// `ERR_clear_error()` after a failed call; otherwise `SSL_get_error` reports these errors for its own connections.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services
/// (platform/); the request stays unchanged until the call returns.
class __attribute__((visibility("default"))) SFtpClient
{
public:
    /// If the client below cannot be created, a record says so and every operation returns -1. Throws `std::bad_alloc`
    /// if there is no memory even for that record, and what the host's log throws.
    SFtpClient();

    /// REQUIRES: no call running on it.
    virtual ~SFtpClient();

    /// Copies would release the same client twice.
    SFtpClient(const SFtpClient&) = delete;
    SFtpClient& operator=(const SFtpClient&) = delete;

    /// Writes the names in the directory `remotePath` to the local file `localPath`, one per line, unchecked: as the
    /// server sends them, except that libcurl ends each line with LF. The local file is created or emptied before the
    /// connection is made; a failure leaves in it what had arrived. Waits up to 90 seconds for each reply of an FTP
    /// server; connecting may take as long as libcurl allows (300 seconds).
    virtual int Listsftpdir(const SFtpRequest& request, std::string& errorText);

    /// Downloads the file `remotePath` to `localPath`, after `CheckFileSizeBeforeDownload`: if that returns false, the
    /// result is -1 and the local file is not touched. Otherwise it is created or emptied before the transfer starts,
    /// and a failure leaves in it what had arrived. Connecting may take 20 seconds for the transfer, and 300 for the
    /// check before it.
    /// 2 usually means that the local file could not be opened.
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

    /// Uploads the local file `localPath` to `remotePath`, creating missing remote directories. `caCert` is not used
    /// and no TLS setting is made: with an ftp: URL login and data are sent in the clear, with an ftps: URL the server
    /// is verified against libcurl's own trust store. Connecting may take up to 20 seconds.
    /// 2 means that the local file could not be opened, or its size not determined.
    /// REQUIRES: a regular file that does not change during the upload. If it shrinks, what is left is sent; of a
    /// directory nothing; of a pipe or a device, which has no size, all of its data, endlessly for /dev/zero. Over FTP
    /// the result is then 18 (0 if there was no data, as in /dev/null). Over SSH it is 0, and of a pipe or a device
    /// usually only the first 65536 bytes are sent.
    virtual int UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText);

    /// Asks the server for the size of `remotePath`. Returns true if a download may proceed: libcurl reports a size
    /// below the limit (104857600 bytes for a local file named "RetentionDB.db", 53687091200 bytes for any other), or
    /// there is no such remote file, so that the download itself can report it. Returns false otherwise; a record says
    /// why. Only the file name in `localPath` matters. Connecting, and each reply of the server, may take as long as
    /// libcurl allows (300 and 120 seconds).
    ///
    /// The check runs without the library's TLS step: with an ftp: URL it logs in in the clear, with an ftps: URL the
    /// server is verified against libcurl's own trust store. libcurl's trace, including the password, goes to the
    /// process's standard error, and header lines to its standard output; with an sftp: URL there are no header lines,
    /// and no password.
    bool CheckFileSizeBeforeDownload(const SFtpRequest& request);

private:
    ISFtpClient* client;
};

#endif
