#ifndef SFTPCLIENT_ISFTPCLIENT_H
#define SFTPCLIENT_ISFTPCLIENT_H

#include "ISFtpResponse.h"
#include "SFtpRequest.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>

/// The client below `SFtpClient`: the same operations, answering with response objects, and a connection test.
///
/// Every operation blocks its caller until libcurl is done. A client keeps nothing between calls, so any number of
/// threads may call one client, or many, at the same time, and with the same request, which is only read. What calls
/// print on standard output interleaves.
///
/// Signals: the connection test, the download and the upload leave SIGPIPE alone; the listing, the rename and the
/// delete let libcurl set it aside for the whole process while they run. A host ignores SIGPIPE itself, once, before
/// its first thread.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services
/// (platform/); the request stays unchanged until the call returns.
///
/// The five transfers answer with a response, failed or not, whose `GetErrCode` tells the outcome. The pointer is
/// empty only when the response could not be made (a record says why). `std::bad_alloc` may pass, and what
/// the host's services throw, but not from within a TLS handshake: there it becomes the result 2, as with `SFtpClient`.
///
/// OpenSSL: a failed handshake and a `caCert` that cannot be read leave their errors in OpenSSL's queue of the calling
/// thread. A host with TLS connections of its own on that thread calls `ERR_clear_error()` after a failed call.
class __attribute__((visibility("default"))) ISFtpClient
{
public:
    virtual ~ISFtpClient();

    /// Tests whether the server can be reached and logged in to, by fetching `remotePath` (a listing for a
    /// directory, the file itself for a file) to standard output. `timeout` has no effect; connecting may take up to
    /// 20 seconds.
    /// Returns 0, the libcurl code of the failure, or -1 when `remotePath` is empty or libcurl gave no handle.
    virtual int TestSConnect(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Writes the names in the directory `remotePath` to `localPath`, one a line, as libcurl delivers them, unchecked.
    /// `timeout`: seconds to wait for each reply of an FTP server; 0 leaves libcurl's default. Connecting may take as
    /// long as libcurl allows (300 seconds), here and in the rename and the delete.
    virtual boost::shared_ptr<ISFtpResponse> Listsftpdir(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Writes the remote file to `localPath`, without the size check that `SFtpClient` makes first. A failed
    /// transfer leaves what had arrived. `timeout` has no effect; connecting may take up to 20 seconds.
    virtual boost::shared_ptr<ISFtpResponse> DownLoadSFtpFile(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Renames `remoteFileName` to `localPath` within the directory `remotePath`, whose listing goes to standard
    /// output. `timeout` has no effect.
    /// REQUIRES: a `remotePath` with a port and a trailing "/"; a server that knows the command "rename OLD NEW", or
    /// an sftp: URL.
    virtual boost::shared_ptr<ISFtpResponse> ReNameSFtpFile(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Deletes `remoteFileName` in the directory `remotePath`. `timeout` has no effect.
    /// REQUIRES: a `remotePath` with a port and a trailing "/"; a server that knows the command "rm PATH", or an
    /// sftp: URL.
    virtual boost::shared_ptr<ISFtpResponse> DelSFtpFile(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Sends the file `localPath` to `remotePath`, creating missing remote directories. No TLS setting of the library
    /// applies and `caCert` is not used: an ftp: URL goes in the clear, an ftps: URL is verified against libcurl's
    /// own trust store. `timeout` has no effect; connecting may take up to 20 seconds.
    /// REQUIRES: a regular file that stays as it is. What becomes of others is told at `SFtpClient`.
    virtual boost::shared_ptr<ISFtpResponse> UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout) = 0;

    /// A new client under a shared pointer. Throws `std::bad_alloc`.
    static boost::shared_ptr<ISFtpClient> CreateClient();

    /// A new client on every call, in spite of the name: give each back through `ReleaseInstance`. Null, with a
    /// record, when it could not be made.
    static ISFtpClient* GetInstance();

    /// Destroys a client from `GetInstance`; null is ignored.
    /// REQUIRES: not a client of `CreateClient`, and no call running on it.
    static void ReleaseInstance(ISFtpClient* instance);
};

#endif
