#include "doctor/ControlConnection.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <request/Pem.h>
#include <tls/TlsTrust.h>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <exception>
#include <new>
#include <regex>

namespace doctor {

namespace {

struct FreeList
{
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

// With a "*" in front, libcurl goes on when the server refuses.
List listOf(const std::vector<std::string>& commands, const std::string& beginning)
{
    List list;
    for (const std::string& command : commands) {
        curl_slist* const longer = curl_slist_append(list.get(), (beginning + command).c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

size_t keep(const char* bytes, size_t size, size_t count, void* listing) noexcept
try {
    static_cast<NameList*>(listing)->append(bytes, size * count);
    return size * count;
} catch (const std::exception&) {
    return 0;
}

void setLimits(CURL* handle, std::chrono::milliseconds limit)
{
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limit.count()));
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(limit);
    curl_easy_setopt(handle, CURLOPT_FTP_RESPONSE_TIMEOUT, static_cast<long>(seconds.count()));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(ControlConnection::kWaits * limit.count()));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
}

// What a session makes of the certificates that it is to trust.
std::string asPem(const std::string& caCert)
{
    if (session::isPem(caCert)) {
        return caCert;
    }
    ERR_clear_error();
    const X509Certificate certificate = readCertificate(caCert);
    return certificate ? printed([&certificate](BIO* out) { PEM_write_bio_X509(out, certificate.get()); })
                       : std::string();
}

// The same failure has the same words each time.
std::string withoutTime(const std::string& text)
{
    static const std::regex time(" after [0-9]+ ms(?=:|$)");
    return std::regex_replace(text, time, "");
}

} // namespace

ControlConnection::ControlConnection(const Access& access, Manner manner)
    : m_access(access), m_manner(manner), m_transcript(access.mask), m_handle(curl_easy_init(), curl_easy_cleanup)
{
    if (!m_handle) {
        throw std::bad_alloc();
    }
    CURL* const handle = m_handle.get();
    curl_easy_setopt(handle, CURLOPT_PORT, static_cast<long>(access.request.port));
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_USERNAME, access.request.userName.c_str());
    curl_easy_setopt(handle, CURLOPT_PASSWORD, access.request.password.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, keep);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &m_names);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, give);
    curl_easy_setopt(handle, CURLOPT_READDATA, this);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_error.data());
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, hear);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, this);
    setLimits(handle, access.limit);
    setTrust();
    if (manner == Manner::Session) {
        curl_easy_setopt(handle, CURLOPT_SSH_AUTH_TYPES,
                         static_cast<long>(CURLSSH_AUTH_PASSWORD | CURLSSH_AUTH_KEYBOARD));
    }
    m_transcript.listenTo(handle);
}

ControlConnection::~ControlConnection() { ERR_clear_error(); }

void ControlConnection::setTrust()
{
    CURL* const handle = m_handle.get();
    if (m_manner == Manner::Bare || m_access.scheme == Scheme::Sftp) {
        return;
    }
    if (m_manner == Manner::Client) {
        sftpSetCertTmp(handle, m_access.request.caCert);
        return;
    }
    curl_easy_setopt(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    curl_easy_setopt(handle, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_TLS));
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, m_manner == Manner::Handshake ? 0L : 2L);
    m_ca = asPem(m_access.request.caCert);
    if (!m_ca.empty() && m_access.trust == Trust::Certificate) {
        curl_blob blob = {m_ca.data(), m_ca.size(), CURL_BLOB_NOCOPY};
        curl_easy_setopt(handle, CURLOPT_CAINFO_BLOB, &blob);
        curl_easy_setopt(handle, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
}

void ControlConnection::prepare(const Transfer& transfer)
{
    CURL* const handle = m_handle.get();
    curl_easy_setopt(handle, CURLOPT_URL, transfer.url.c_str());
    curl_easy_setopt(handle, CURLOPT_DIRLISTONLY, transfer.what == Transfer::What::Names ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_NOBODY, transfer.what == Transfer::What::Nothing ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_UPLOAD, transfer.what == Transfer::What::Upload ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(transfer.content.size()));
    m_lastCommand = transfer.lastCommand;
    m_content = transfer.content;
    m_given = 0;
    m_names = {};
    m_error[0] = '\0';
}

ProbeResult ControlConnection::run(const Transfer& transfer)
{
    const char* const beginning = transfer.areRequired ? "" : "*";
    const List afterListing = listOf(transfer.afterListing, beginning);
    prepare(transfer);
    curl_easy_setopt(m_handle.get(), CURLOPT_POSTQUOTE, afterListing.get());
    m_isLost = false;
    const CURLcode code = curl_easy_perform(m_handle.get());
    curl_easy_setopt(m_handle.get(), CURLOPT_POSTQUOTE, nullptr);
    m_isOpened = true;
    return m_isLost ? ProbeResult{} : resultOf(code);
}

ProbeResult ControlConnection::resultOf(CURLcode code)
{
    ProbeResult result;
    result.made = true;
    result.code = code;
    result.error =
        ServerText(m_error[0] != '\0' ? withoutTime(m_error.data()) : curl_easy_strerror(code), m_access.mask);
    result.names = m_names;
    m_transcript.end(code);
    result.transcript = m_transcript.exchanges();
    const char* entryPath = nullptr;
    const char* address = nullptr;
    curl_off_t connected = 0;
    CURL* const handle = m_handle.get();
    curl_easy_getinfo(handle, CURLINFO_SSL_VERIFYRESULT, &result.verifyResult);
    if (curl_easy_getinfo(handle, CURLINFO_FTP_ENTRY_PATH, &entryPath) == CURLE_OK && entryPath != nullptr) {
        result.entryPath = ServerText(entryPath, m_access.mask);
    }
    if (curl_easy_getinfo(handle, CURLINFO_PRIMARY_IP, &address) == CURLE_OK && address != nullptr) {
        result.address = address;
    }
    curl_easy_getinfo(handle, CURLINFO_CONNECT_TIME_T, &connected);
    result.connected = connected > 0;
    // After a TLS handshake that failed, libcurl 8.14 no longer knows it.
    if (result.connected && result.address.empty()) {
        result.address = m_address.data();
    }
    return result;
}

void ControlConnection::cut() const { shutdown(m_control, SHUT_RDWR); }

void ControlConnection::waitLonger() const
{
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(kWaits * m_access.limit);
    curl_easy_setopt(m_handle.get(), CURLOPT_FTP_RESPONSE_TIMEOUT, static_cast<long>(seconds.count()));
}

size_t ControlConnection::give(char* bytes, size_t one, size_t count, void* self) noexcept
{
    auto& connection = *static_cast<ControlConnection*>(self);
    const size_t given = connection.m_content.copy(bytes, one * count, connection.m_given);
    connection.m_given += given;
    return given;
}

size_t ControlConnection::hear(char* /*bytes*/, size_t one, size_t count, void* self) noexcept
{
    const auto& connection = *static_cast<const ControlConnection*>(self);
    if (!connection.m_transcript.isEnough(connection.m_lastCommand)) {
        return one * count;
    }
    // libcurl 7.88 would go on with memory that it has freed, if it read another reply after one that was refused.
    connection.cut();
    return 0;
}

bool ControlConnection::isControl(const curl_sockaddr& address) const
{
    const in_port_t port = address.family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(address.addr).sin6_port
                                                      : reinterpret_cast<const sockaddr_in&>(address.addr).sin_port;
    return ntohs(port) == m_access.request.port;
}

curl_socket_t ControlConnection::openSocket(void* self, curlsocktype /*purpose*/, curl_sockaddr* address) noexcept
{
    auto& connection = *static_cast<ControlConnection*>(self);
    const bool isControl = connection.isControl(*address);
    if (isControl && connection.m_isOpened) {
        connection.m_isLost = true;
        return CURL_SOCKET_BAD;
    }
    const int number = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    if (isControl) {
        connection.m_control = number;
        auto& text = connection.m_address;
        getnameinfo(&address->addr, address->addrlen, text.data(), static_cast<socklen_t>(text.size()), nullptr, 0,
                    NI_NUMERICHOST);
    }
    return number;
}

} // namespace doctor
