#ifndef SFTPCLIENT_ISFTPCLIENT_H
#define SFTPCLIENT_ISFTPCLIENT_H

#include "ISFtpResponse.h"
#include "SFtpRequest.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>

/// The client below `SFtpClient`: the same operations, answering with response objects, and a connection test.
///
/// Every operation blocks its caller until libcurl is done. A client keeps no state between calls, so any number of
/// threads may call one client, or many, at the same time, and with the same request, which is only read. What calls
/// print on standard output interleaves.
///
/// Signals: the connection test, the download and the upload do not touch SIGPIPE; the listing, the rename and the
/// delete let libcurl ignore it for the whole process while they run. A host ignores SIGPIPE itself, once, before its
/// first thread.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services
/// (platform/); the request stays unchanged until the call returns.
///
/// The five transfers return a response, failed or not, whose `GetErrCode` has the result. The pointer is empty only if
/// the response could not be created (a record says why). `std::bad_alloc` may be thrown, and what the host's services
/// throw, except during a TLS handshake: there it becomes the result 2, as with `SFtpClient`.
///
/// OpenSSL: a failed handshake and an unreadable `caCert` leave their errors in the calling thread's OpenSSL error
/// queue. A host with TLS connections of its own on that thread calls `ERR_clear_error()` after a failed call.
class __attribute__((visibility("default"))) ISFtpClient
{
public:
    virtual ~ISFtpClient();

    /// Tests the connection and the login by writing what `remotePath` names (a directory's listing, or a file's
    /// content) to standard output. `timeout` has no effect; connecting may take up to 20 seconds.
    /// Returns 0, the libcurl code of the failure, or -1 if `remotePath` is empty or libcurl returned no handle.
    virtual int TestSConnect(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Writes the names in the directory `remotePath` to `localPath`, one per line, as libcurl delivers them,
    /// unchecked. `timeout`: seconds to wait for each reply of an FTP server; 0 keeps libcurl's default. Connecting may
    /// take as long as libcurl allows (300 seconds), here and in the rename and the delete.
    virtual boost::shared_ptr<ISFtpResponse> Listsftpdir(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Writes the remote file to `localPath`, without the size check that `SFtpClient` does first. A failed transfer
    /// leaves what had arrived. `timeout` has no effect; connecting may take up to 20 seconds.
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

    /// Uploads the file `localPath` to `remotePath`, creating missing remote directories. No TLS setting of the library
    /// applies and `caCert` is not used: with an ftp: URL everything is sent in the clear, with an ftps: URL the server
    /// is verified against libcurl's own trust store. `timeout` has no effect; connecting may take up to 20 seconds.
    /// REQUIRES: a regular file that does not change during the upload; `SFtpClient` describes what happens to others.
    virtual boost::shared_ptr<ISFtpResponse> UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout) = 0;

    /// Creates a client, owned by a shared pointer. Throws `std::bad_alloc`.
    static boost::shared_ptr<ISFtpClient> CreateClient();

    /// Creates a new client on every call, despite its name: release each with `ReleaseInstance`. Returns null and
    /// writes a record if it could not be created.
    static ISFtpClient* GetInstance();

    /// Destroys a client from `GetInstance`; null is ignored.
    /// REQUIRES: a client not from `CreateClient`, and no call running on it.
    static void ReleaseInstance(ISFtpClient* instance);
};

#endif
