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

/// The oldest TLS version that a session accepts.
enum class TlsVersion
{
    Tls12,
    Tls13
};

/// The phase of a transfer.
enum class TransferPhase
{
    Connecting,   ///< no byte of the file has moved yet
    Transferring, ///< bytes are moving
    Finishing     ///< all bytes have moved; the server has not confirmed yet
};

/// The progress of a transfer.
struct TransferProgress
{
    std::int64_t bytes = 0;  ///< moved so far, including those of an earlier attempt that is resumed
    std::int64_t total = -1; ///< the file's size; -1: unknown
    TransferPhase phase = TransferPhase::Connecting; ///< the current phase
};

enum class EntryKind
{
    File,
    Directory,
    Other ///< a link, a device, or what the server does not specify
};

/// An entry of a directory on the server. The server chose the name: check it before using it as a local path.
struct RemoteEntry
{
    std::string name;                  ///< within its directory
    EntryKind kind = EntryKind::Other; ///< what it is
    std::int64_t size = -1;            ///< in bytes; -1: unknown
    /// Set if the server reports it in UTC: by `StatEntry` for a file, if the server supports MLST or MDTM; by
    /// `ListEntries`, if it supports MLSD. Other listings do not say which time zone they use.
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
    ChecksumKind kind = ChecksumKind::Sha256; ///< how it was computed
    std::string digits;                       ///< hexadecimal, lower case: 64, or 8 of a CRC-32
};

/// Takes `size` bytes of a download; false ends it, with 23.
using DataSink = std::function<bool(const char* bytes, std::size_t size)>;

/// Fills up to `size` bytes of an upload and returns how many; 0 at the end, also when it is asked again.
using DataSource = std::function<std::size_t(char* bytes, std::size_t size)>;

/// How a session behaves. A plain record: set the fields that differ from the defaults; the session checks them.
struct SessionOptions
{
    /// `ftp:` URLs require TLS before the login, on control and data connections; a server without TLS gives 64. If
    /// false, such a server gets the login and the files in the clear; TLS is still used if the server offers it.
    bool requireTls = true;
    bool compareHostName = true;               ///< the server's certificate must match the URL's host name
    TlsVersion minimumTls = TlsVersion::Tls12; ///< the oldest version that is accepted
    std::string pinnedPublicKey;               ///< "sha256//BASE64": the server's public key; any other gives 90
    std::string clientCertificate;             ///< PEM text; requires `clientKey`
    std::string clientKey;                     ///< PEM text, without a passphrase

    std::string knownHostsFile;        ///< SSH: a file in OpenSSH's known_hosts format
    std::string hostKeySha256;         ///< SSH: the host key's fingerprint, as ssh-keygen -l prints it
    bool acceptUnknownHostKey = false; ///< SSH: accept a host that is not known; a changed key is still refused

    std::string proxy; ///< a URL; empty: no proxy, whatever the environment says. An HTTP proxy must allow CONNECT

    // Limits; 0: none.
    std::chrono::milliseconds connectTimeout{20000}; ///< until the login is done, and for each data connection
    std::chrono::milliseconds replyTimeout{60000};   ///< for each reply
    std::chrono::milliseconds stallTimeout{60000};   ///< how long a transfer may move no byte
    std::chrono::milliseconds callTimeout{0};        ///< for the whole call
    std::uint64_t sendRate = 0;                      ///< bytes a second, for each transfer
    std::uint64_t receiveRate = 0;                   ///< bytes a second, for each transfer

    bool atomicUpload = true; ///< to a temporary name beside the target, renamed once complete
    bool verifyUpload = true; ///< compare the size on the server with the bytes sent
    /// A download returns once the file is on the disk (fsync). If false, the system writes it later, which is much
    /// faster for many small files: call sync() once after the last.
    bool syncDownload = true;
    /// Files only: a transfer that breaks off keeps what it has moved, and the next call for the same file continues
    /// from there if the last 64 KiB match, otherwise from the start. See "Resuming" below.
    bool resume = false;

    /// Listings over TLS must end with TLS's close_notify, which some servers leave out, on Windows for example; others
    /// get 56. If false, a listing that somebody on the way has cut off is taken for a whole one (libcurl before 8.14).
    bool requireListingEnd = false;

    std::chrono::milliseconds idleTimeout{60000}; ///< how long an idle connection is kept for reuse
    unsigned maxConnections = 8;                  ///< to one server at a time; further calls wait

    /// Called at most ten times a second, and at the end of a file's transfer, on the thread of the call it reports on.
    /// Of the limits, the time it takes counts towards `callTimeout` and, while connecting, `connectTimeout` only.
    std::function<void(const TransferProgress&)> progress;
};

/// The five operations of `SFtpClient`, and more, on every server: secure by default, over connections that are kept
/// between calls.
///
/// A host that has an `SFtpClient` changes the type of its object. The requests stay the same, but URLs need no port,
/// names may contain blanks, and all operations use `caCert`: one or more certificates (PEM), or one (DER), which alone
/// are trusted. If it is empty, the machine's trust store is used; "none" works as for `SFtpClient`.
///
/// Every operation returns
///   0    for success; `errorText` is unchanged;
///   else libcurl's result code (9 is reported as 78), also for what the session itself detects; `errorText` is
///   replaced
///        with libcurl's text, its detail, and the server's last reply. -1 is never returned.
/// Nothing is printed; one record in the host's log says how each call ended. The session itself throws only
/// `std::bad_alloc`; an exception from the host's services, a sink, a source or `progress` ends the call and reaches
/// the caller.
///
/// Refused before anything is sent: a URL that does not parse (3), a scheme other than ftp, ftps and sftp (1), a port
/// above 65535 (3), control bytes in the URL, a name, the user or the password (43), a path or name of more than 8000
/// bytes (43), and a zero byte in `localPath` (43). Everything after the host of a URL is the path: "?", "#" and ";"
/// are part of a name.
///
/// Threads: any number may use one session at the same time. Each call has a connection to itself: an idle one with the
/// same server, login, trust and options, or a new one.
///
/// Kept connections: closed by the session's destructor, and by the next call after `idleTimeout`. libcurl keeps a
/// connection's login in memory while the connection lives; the session makes no copy of its own.
///
/// Resuming: with `SessionOptions::resume`, UploadFileToSFtpServer and DownLoadSFtpFile leave a failed transfer's
/// temporary file in place, ".NAME.DIGITS.part", and find it again: the digits depend on both ends' names and on the
/// file's size and modification time, so a file that has changed starts over under another name. A caller that gives up
/// removes what is left. If several calls transfer the same file at once, one resumes; an upload holds a lock (flock)
/// on the local file for that. No effect if `atomicUpload` is false, nor on DownLoadTo and UploadFrom, whose bytes
/// cannot be read twice.
///
/// fork(): a child must neither use nor destroy its parent's sessions, because both would use the same connections; it
/// makes its own. A child that ends by exit() destroys those in static storage: let it end by _exit() or exec.
///
/// Signals: a call never raises SIGPIPE or SIGXFSZ. The thread's signal mask, errno and OpenSSL's error queue are as
/// before when a call returns.
///
/// REQUIRES, for every operation: the host has called `curl_global_init` and supplies the host services (platform/);
/// the request stays unchanged until the call returns.
class __attribute__((visibility("default"))) SFtpSession : public SFtpClient
{
public:
    /// Throws `std::invalid_argument` for invalid options, with a text that names the field, and `std::system_error` if
    /// the process has no file descriptor left.
    explicit SFtpSession(SessionOptions options = {});

    /// REQUIRES: no call is running.
    ~SFtpSession() override;

    SFtpSession(const SFtpSession&) = delete;
    SFtpSession& operator=(const SFtpSession&) = delete;

    /// Writes the names in the directory `remotePath` to the local file `localPath`, one per line, without "." and
    /// "..". The local file is replaced once the listing is complete; a failure leaves it as it was.
    int Listsftpdir(const SFtpRequest& request, std::string& errorText) override;

    /// Downloads the file `remotePath` to `localPath`, which is replaced once the file is complete; a failure leaves it
    /// as it was. 63 for a file of 53687091200 bytes or more (104857600 if `localPath` is named "RetentionDB.db"); 23
    /// if the local file cannot be written.
    int DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Renames `remoteFileName` to `localPath` within the directory `remotePath`. 21 if the server refuses.
    int ReNameSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Deletes `remoteFileName` in the directory `remotePath`. 21 if the server refuses.
    int DelSFtpFile(const SFtpRequest& request, std::string& errorText) override;

    /// Uploads the regular file `localPath` to `remotePath` and creates missing directories. 26 if the local file
    /// cannot be read, 18 if its size on the server differs afterwards. A failed upload removes its temporary file if
    /// the connection still works. On a server that cannot rename over an existing file, that file is renamed first and
    /// deleted last; if this breaks off, `errorText` names what is left.
    int UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText) override;

    /// Connects, logs in and, over FTP, enters the directory `remotePath`; opens no data connection.
    int TestSConnect(const SFtpRequest& request, std::string& errorText);

    /// Replaces `entries` with the contents of the directory `remotePath`, without ".", "..", and names that contain
    /// "/" or a zero byte; a failure leaves `entries` unchanged. 63 if the listing, or what is kept of it, exceeds 128
    /// MiB.
    int ListEntries(const SFtpRequest& request, std::vector<RemoteEntry>& entries, std::string& errorText);

    /// Describes the file or directory `remotePath`. 78 if it does not exist; a failure leaves `entry` unchanged.
    int StatEntry(const SFtpRequest& request, RemoteEntry& entry, std::string& errorText);

    /// Reads when the file `remotePath` was modified, in whole seconds, with one command (MDTM), for servers whose
    /// listings have no times. 78 if there is no such file, 4 if the server does not know the command; a failure leaves
    /// `modified` unchanged.
    int ReadModified(const SFtpRequest& request, std::chrono::system_clock::time_point& modified,
                     std::string& errorText);

    /// Sets when the file `remotePath` was modified, in whole seconds. 4 if the server does not offer MFMT, 21 if it
    /// refuses.
    int SetModified(const SFtpRequest& request, std::chrono::system_clock::time_point modified, std::string& errorText);

    /// Has the server compute a checksum of the file `remotePath`: with HASH or XSHA256 if it offers one of them,
    /// otherwise with XCRC. 4 if it offers none, as over SFTP; 21 if it refuses; a failure leaves `checksum` unchanged.
    /// The server reads the whole file before it replies, which must take no longer than `replyTimeout`.
    int ReadChecksum(const SFtpRequest& request, RemoteChecksum& checksum, std::string& errorText);

    /// Creates the directory `remotePath`, whose parent must exist. 21 if the server refuses.
    int MakeSFtpDir(const SFtpRequest& request, std::string& errorText);

    /// Removes the empty directory `remotePath`. 21 if the server refuses.
    int RemoveSFtpDir(const SFtpRequest& request, std::string& errorText);

    /// Downloads the file `remotePath` to `sink`, in order; `localPath` is not used. If the download fails, `sink` has
    /// received the beginning of the file. 63 for a file of 53687091200 bytes or more. 56 if the server has not
    /// reported the size, and the data came over TLS but did not end with its close_notify: it may have been cut off.
    int DownLoadTo(const SFtpRequest& request, const DataSink& sink, std::string& errorText);
    /// The same to a stream; 23 if writing to it fails.
    int DownLoadTo(const SFtpRequest& request, std::ostream& out, std::string& errorText);

    /// Uploads the bytes of `source` to `remotePath`, as `UploadFileToSFtpServer` does. `size`: their number, or -1 if
    /// unknown; 26 if there are fewer or more.
    int UploadFrom(const SFtpRequest& request, const DataSource& source, std::string& errorText,
                   std::int64_t size = -1);
    /// The same from a stream, up to its end, even if it is to throw there; 26 if reading it fails.
    int UploadFrom(const SFtpRequest& request, std::istream& in, std::string& errorText, std::int64_t size = -1);

    /// Ends every call that is running, waiting or made later with 42. May be called from any thread and from a signal
    /// handler. A call that is already complete returns 0.
    void Cancel() noexcept;

    /// Lets new calls run again.
    void ClearCancel() noexcept;

private:
    class Engine;
    std::unique_ptr<Engine> m_engine;
};

#endif
