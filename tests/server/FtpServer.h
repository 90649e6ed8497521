#ifndef TESTSERVER_FTPSERVER_H
#define TESTSERVER_FTPSERVER_H

#include "Certificates.h"
#include "Faults.h"
#include "Transcript.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace testserver {

enum class TlsMode
{
    Plain,    ///< no TLS; AUTH is refused
    Explicit, ///< in the clear until the client asks with AUTH
    Implicit  ///< from the first byte
};

struct ServerConfig
{
    std::filesystem::path root;
    std::string user = "backup";
    std::string password;
    TlsMode tls = TlsMode::Explicit;
    std::string startDirectory = "/"; ///< where a login leads, as in a server that does not confine its users
    bool tlsRequiredAtLogin = false;
    bool strictUploadEnd = false; ///< an upload that ends without the client's close_notify is refused with 426
    Certificate certificate;      ///< not used when `tls` is Plain
    std::optional<Certificate> dataCertificate;
    /// Data connections must continue the control connection's TLS session; else 522. Excludes `dataCertificate`, and
    /// sends session tickets on data connections.
    bool tlsReuseRequired = false;
    bool dataTickets = false; ///< session tickets on data connections; README.md says what they cost an upload
    int minTlsVersion = 0;    ///< an OpenSSL version number; 0: OpenSSL's own choice
    int maxTlsVersion = 0;
    std::chrono::milliseconds stallLimit{0}; ///< after which a stall ends like a drop; 0: when the client leaves
    std::string address = "127.0.0.1";       ///< where it listens, on data ports too; or "::1", where PASV is refused
    std::uint16_t port = 0;                  ///< 0: a free one
    /// The address in the replies to PASV, as "192,0,2,1"; empty: the one where it listens.
    std::string announcedAddress;
    /// The port to name to a client in place of the one where a data connection is awaited, as behind a relay. Called
    /// by the threads of sessions; empty: the port itself.
    std::function<std::uint16_t(std::uint16_t)> announcedPort;
    /// Connections with TLS, the control connection too, end without close_notify.
    bool endsUnannounced = false;
    std::vector<std::string> checksums; ///< which of HASH, XSHA256 and XCRC it offers; HASH begins with MD5
    /// Files have their own times, which MFMT sets, and MLSD tells links apart: as on a disk that others use, too.
    bool timesOfDisk = false;
    std::vector<std::string> listedToo; ///< lines that each listing by MLSD has besides
    bool hidesDotNames = false;         ///< no listing has names that begin with a dot
    bool ignoresCase = false;           ///< "A" is the file "a", where that is there
    std::vector<Fault> faults;
    bool keepTranscripts = true;
    /// Called with the word of each command before it is carried out, by the thread of its session; must not throw.
    std::function<void(const std::string&)> onCommand;
    std::function<void(const Transcript&)> onSessionEnd; ///< called for each session, one at a time; must not throw
};

/// An FTP server on a loopback address, with a thread for each session. It serves from construction to destruction.
class FtpServer
{
public:
    /// Throws when the folder, the certificates or the port cannot be used.
    explicit FtpServer(const ServerConfig& config);
    ~FtpServer();
    FtpServer(const FtpServer&) = delete;
    FtpServer& operator=(const FtpServer&) = delete;

    std::uint16_t port() const;

    /// Waits until every session that has begun is over, and gives their transcripts in the order in which they began.
    std::vector<Transcript> transcripts();

    /// Ends all sessions and accepts no more.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace testserver

#endif
