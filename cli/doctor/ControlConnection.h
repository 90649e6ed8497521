#ifndef SFTPCLIENT_CLI_DOCTOR_CONTROLCONNECTION_H
#define SFTPCLIENT_CLI_DOCTOR_CONTROLCONNECTION_H

#include "doctor/Access.h"
#include "doctor/Report.h"
#include "doctor/Transcript.h"

#include <curl/curl.h>
#include <netdb.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace doctor {

/// By whose settings a connection is made.
enum class Manner
{
    Client,    ///< of `SFtpClient`'s operations, but for the upload and the size check
    Bare,      ///< of those two: no TLS asked for, and the machine's trust store
    Session,   ///< of `SFtpSession`
    Handshake, ///< of nobody: `SFtpSession`'s trust, without a comparison of the host's name
};

/// What is transferred over a connection.
struct Transfer
{
    std::string url; ///< of a directory, or of a file
    enum class What
    {
        LongListing, ///< LIST
        Names,       ///< NLST
        Nothing,     ///< the directory is entered, and that is all
        Download,
        Upload
    } what = What::LongListing;
    /// With FTP these commands may fail; so they may over SSH, unless `areRequired`.
    std::vector<std::string> afterListing = {};
    bool areRequired = false;
    std::string content = {}; ///< of an upload
    /// The transfer is refused after the reply to what begins so; to anything, if it is empty.
    std::optional<std::string> lastCommand = {};
};

/// A control connection of libcurl's: transfers over it, one after the other, as long as it lasts. Where those in whose
/// manner it is made would trust the server with the password, so does this.
class ControlConnection
{
public:
    /// A transfer may take this many times the limit, before it is given up as a whole.
    static constexpr int kWaits = 3;

    /// REQUIRES: `access` outlives this object.
    ControlConnection(const Access& access, Manner manner);
    ~ControlConnection();
    ControlConnection(const ControlConnection&) = delete;
    ControlConnection& operator=(const ControlConnection&) = delete;

    CURL* handle() const { return m_handle.get(); }

    /// The transcript of what comes of it begins with that of the transfers before. Once the connection is gone,
    /// nothing is made.
    ProbeResult run(const Transfer& transfer);

    /// Lets the next transfer connect and log in once more.
    void mayReconnect()
    {
        m_isOpened = false;
        m_transcript.beginAnew();
    }

    /// Lets each reply take as long as a transfer may.
    void waitLonger() const;

    /// For a transfer that has seen enough: what libcurl would still say to the server is not said.
    void cut() const;

private:
    void setTrust();
    void prepare(const Transfer& transfer);
    ProbeResult resultOf(CURLcode code);
    bool isControl(const curl_sockaddr& address) const;
    static size_t give(char* bytes, size_t one, size_t count, void* self) noexcept;
    static size_t hear(char* bytes, size_t one, size_t count, void* self) noexcept;
    static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address) noexcept;

    const Access& m_access;
    Manner m_manner;
    Transcript m_transcript; // made before the handle, because its farewell is still taken down
    NameList m_names;
    std::array<char, CURL_ERROR_SIZE> m_error = {};
    std::optional<std::string> m_lastCommand;
    std::string m_content;
    std::size_t m_given = 0;
    std::string m_ca;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_handle;
    int m_control = -1;
    std::array<char, NI_MAXHOST> m_address = {}; ///< of the server, as a text; empty: none was tried
    bool m_isOpened = false;
    bool m_isLost = false;
};

} // namespace doctor

#endif
