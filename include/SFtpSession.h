#ifndef SFTPCLIENT_SFTPSESSION_H
#define SFTPCLIENT_SFTPSESSION_H

#include "SFtpClient.h"
#include "SFtpRequest.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The oldest version of TLS that a session speaks.
enum class TlsVersion
{
    Tls12,
    Tls13
};

/// Where a transfer stands.
enum class TransferPhase
{
    Connecting,   ///< no byte of the file has moved yet
    Transferring, ///< bytes move
    Finishing     ///< all bytes have moved; the server's confirmation is awaited
};

/// How far a transfer is.
struct TransferProgress
{
    std::int64_t bytes = 0;  ///< of the file, moved so far, those of an earlier attempt that is resumed included
    std::int64_t total = -1; ///< of the file; -1: unknown
    TransferPhase phase = TransferPhase::Connecting; ///< what is going on
};

enum class EntryKind
{
    File,
    Directory,
    Other ///< a link, a device, or what the server does not name
};

/// What is in a directory on the server. Names are the server's: check them before they become local paths.
struct RemoteEntry
{
    std::string name;                  ///< within its directory
    EntryKind kind = EntryKind::Other; ///< what it is
    std::int64_t size = -1;            ///< in bytes; -1: unknown
    /// Where the server reports it in UTC: always in a file's `StatEntry`, unless the server knows none of MLST and
    /// MDTM; in `ListEntries` where it knows MLSD. Other listings are in a time zone that nobody tells.
    std::optional<std::chrono::system_clock::time_point> modified;
};

enum class ChecksumKind
{
    Sha256,
    Crc32 ///< as in ISO 3309; finds damage by accident only
};

/// What a server has computed from the bytes of a file.
struct RemoteChecksum
{
    ChecksumKind kind = ChecksumKind::Sha256;
    std::string digits; ///< hexadecimal, lower case: 64, or 8 of a CRC-32
};

/// Takes `size` bytes of a download; false ends it, with 23.
using DataSink = std::function<bool(const char* bytes, std::size_t size)>;

/// Fills up to `size` bytes of an upload and returns how many; 0 at the end.
using DataSource = std::function<std::size_t(char* bytes, std::size_t size)>;

/// How a session behaves. A plain record: fill in what differs, and hand it to the session, which checks it.
struct SessionOptions
{
    /// `ftp:` URLs go on only over TLS, before the login, for control and data; else the result is 64. False lets a
    /// server without TLS have the login and the files in the clear; TLS is still used where the server has it.
    bool requireTls = true;
    bool compareHostName = true;               ///< the server's certificate must name the URL's host
    TlsVersion minimumTls = TlsVersion::Tls12; ///< no older version is spoken
    std::string pinnedPublicKey;               ///< "sha256//BASE64": the public key that the server must have; else 90
    std::string clientCertificate;             ///< PEM text; with `clientKey`
    std::string clientKey;                     ///< PEM text, without a passphrase

    std::string knownHostsFile; ///< SSH: a file as OpenSSH writes it
    std::string hostKeySha256;  ///< SSH: the fingerprint that the host key must have, as ssh-keygen -l prints it
    bool acceptUnknownHostKey =
        false; ///< SSH: go on where nothing is known of the host; a changed key is refused still

    std::string proxy; ///< a URL; empty: none, whatever the environment says. A proxy for HTTP must allow CONNECT

    // Limits; 0: none.
    std::chrono::milliseconds connectTimeout{20000}; ///< up to the end of the login, and for each data connection
    std::chrono::milliseconds replyTimeout{60000};   ///< for each reply
    std::chrono::milliseconds stallTimeout{60000};   ///< how long a transfer may go without a byte
    std::chrono::milliseconds callTimeout{0};        ///< for a call as a whole
    std::uint64_t sendRate = 0;                      ///< bytes a second
    std::uint64_t receiveRate = 0;                   ///< bytes a second

    bool atomicUpload = true; ///< under a temporary name beside the target, renamed when it is whole
    bool verifyUpload = true; ///< compare the size on the server
    /// Files only: what a broken transfer has moved stays, and the next call for the same file goes on from there, if
    /// the last 64 KiB agree; else from the start. See "Resuming" below.
    bool resume = false;

    std::chrono::milliseconds idleTimeout{60000}; ///< how long an idle connection may be used again
    unsigned maxConnections = 8;                  ///< to one server at a time; further calls wait

    /// Called at most ten times a second, and at the end, on the thread of the call that it is about.
    std::function<void(const TransferProgress&)> progress;
};

/// The five operations of `SFtpClient`, and more, on every server: safe unless told otherwise, over connections that
/// are kept from call to call.
///
/// A host that has an `SFtpClient` changes the type of its object. The requests are the same, but no port is needed in
/// a URL, names may hold blanks, and `caCert` counts for all operations: one or more certificates (PEM), or one (DER),
/// that are trusted alone; empty, the machine's trust store is; "none" is as for `SFtpClient`.
///
/// Every operation returns
///   0    success; `errorText` is left as it was,
///   else libcurl's result code (9 is reported as 78), or the one that libcurl has for what the session itself found;
///        `errorText` is replaced by libcurl's text, its detail, and the server's last reply. -1 is never returned.
/// Nothing is printed; a record of the host's log tells how each call ended. Of the session itself only
/// `std::bad_alloc` is thrown; what the host's services, a sink, a source or `progress` throw ends the call and passes
/// to the caller.
///
/// Refused before anything is sent: a URL that cannot be read (3), another scheme than ftp, ftps and sftp (1), a port
/// above 65535 (3), and control bytes in the URL, a name, the user or the password (43). All of a URL behind the host
/// is a path: "?", "#" and ";" are bytes of a name.
///
/// Threads: any number may use one session at the same time. Each call has a connection to itself, an idle one of the
/// same server, login, trust and options where there is one.
///
/// Kept connections: closed by the session's destructor, and at the next call after `idleTimeout`. libcurl keeps the
/// login of a connection in memory as long as the connection lives; the session makes no copy of its own.
///
/// Resuming: with `SessionOptions::resume`, UploadFileToSFtpServer and DownLoadSFtpFile leave the temporary file of a
/// failure where it is, and find it again: its name has digits that are made of both ends' names and of the file's size
/// and time of modification, so that a file that has changed begins anew under another name. Who gives up for good
/// removes what is left, ".NAME.DIGITS.part". Of several calls for one file at a time, one resumes; an upload holds a
/// lock (flock) on the local file for that. Without effect where `atomicUpload` is false, and for DownLoadTo and
/// UploadFrom, whose bytes cannot be had a second time.
///
/// fork(): a child leaves its parent's sessions alone and makes its own; both would use the same connections.
///
/// Signals: SIGPIPE cannot come from a call. The thread's signal mask, errno and OpenSSL's queue of errors are as
/// before when a call returns.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services (platform/);
/// the request stays unchanged until the call returns.
class __attribute__((visibility("default"))) SFtpSession : public SFtpClient
{
public:
    /// Throws `std::invalid_argument`, whose text names the field, for options that cannot be, and `std::system_error`
    /// where the process has no descriptor left.
    explicit SFtpSession(SessionOptions options = {});

    /// REQUIRES: no call running on it.
    ~SFtpSession() override;

    SFtpSession(const SFtpSession&) = delete;
    SFtpSession& operator=(const SFtpSession&) = delete;

    /// Writes the names in the directory `remotePath` to the local file `localPath`, one a line, without "." and "..".
    /// The local file is replaced when all is there; a failure leaves it as it was.
    int Listsftpdir(const SFtpRequest& request, std::string& errorText) override;

    /// Fetches the file `remotePath` into `localPath`, which is replaced when all is there; a failure leaves it as it
    /// was. 63 where the file is as large as 104857600 bytes for a `localPath` named "RetentionDB.db", or 53687091200
    /// bytes for any other; 23 where the local file cannot be written.
    int DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Renames `remoteFileName` to `localPath` within the directory `remotePath`. 21 where the server refuses.
    int ReNameSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Deletes `remoteFileName` in the directory `remotePath`. 21 where the server refuses.
    int DelSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Sends the regular file `localPath` to `remotePath`, creating missing directories. 26 where the local file cannot
    /// be read, 18 where the server has another number of bytes afterwards. A failure removes the temporary file from
    /// the server as long as the connection lasts. A server that does not rename over an existing file has it renamed
    /// away first and deleted last; where that breaks off, `errorText` names what is left.
    int UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText) override;

    /// Connects and logs in, and over FTP enters the directory `remotePath`; no data connection is made.
    int TestSConnect(const SFtpRequest& request, std::string& errorText);

    /// Replaces `entries` by what is in the directory `remotePath`, without "." and "..", and without names that hold a
    /// "/" or a zero byte; a failure leaves it alone. 63 where the listing, or what is kept of it, is larger than
    /// 128 MiB.
    int ListEntries(const SFtpRequest& request, std::vector<RemoteEntry>& entries, std::string& errorText);

    /// Tells about the file or directory `remotePath`. 78 where there is none; a failure leaves `entry` alone.
    int StatEntry(const SFtpRequest& request, RemoteEntry& entry, std::string& errorText);

    /// Tells when the file `remotePath` was modified, in whole seconds, by one command (MDTM): where a listing has no
    /// times. 78 where there is no such file, 4 where the server does not know the command; a failure leaves `modified`
    /// alone.
    int ReadModified(const SFtpRequest& request, std::chrono::system_clock::time_point& modified,
                     std::string& errorText);

    /// Sets when the file `remotePath` was modified; parts of a second are cut off. 4 where the server does not offer
    /// MFMT, 21 where it refuses.
    int SetModified(const SFtpRequest& request, std::chrono::system_clock::time_point modified, std::string& errorText);

    /// Has the server compute a checksum of the file `remotePath`: by HASH or XSHA256 where it offers one of them,
    /// else by XCRC. 4 where it offers none, as over SFTP; 21 where it refuses; a failure leaves `checksum` alone. The
    /// server reads the whole file before it replies: `replyTimeout` counts.
    int ReadChecksum(const SFtpRequest& request, RemoteChecksum& checksum, std::string& errorText);

    /// Makes the directory `remotePath`, whose parent must be there. 21 where the server refuses.
    int MakeSFtpDir(const SFtpRequest& request, std::string& errorText);

    /// Removes the empty directory `remotePath`. 21 where the server refuses.
    int RemoveSFtpDir(const SFtpRequest& request, std::string& errorText);

    /// Hands the file `remotePath` to `sink`, in order. `localPath` is not used. What `sink` has got when the download
    /// fails is the beginning of the file. 63 where the file is as large as 53687091200 bytes.
    int DownLoadTo(const SFtpRequest& request, const DataSink& sink, std::string& errorText);
    /// The same into a stream; 23 where it takes no more.
    int DownLoadTo(const SFtpRequest& request, std::ostream& out, std::string& errorText);

    /// Sends what `source` gives to `remotePath`, as `UploadFileToSFtpServer` does. `size`: how many bytes there will
    /// be, -1 where that is not known; 26 where there are fewer or more.
    int UploadFrom(const SFtpRequest& request, const DataSource& source, std::string& errorText,
                   std::int64_t size = -1);
    /// The same from a stream, up to its end; 26 where it cannot be read.
    int UploadFrom(const SFtpRequest& request, std::istream& in, std::string& errorText, std::int64_t size = -1);

    /// Ends every call that runs or waits, and every one that comes later, with 42. From any thread, or from a signal
    /// handler. What a call has completed by then stays, with 0.
    void Cancel() noexcept;

    /// Lets calls run again.
    void ClearCancel() noexcept;

private:
    class Engine;
    std::unique_ptr<Engine> m_engine;
};

#endif
