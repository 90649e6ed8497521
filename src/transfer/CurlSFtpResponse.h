#ifndef SFTPCLIENT_TRANSFER_CURLSFTPRESPONSE_H
#define SFTPCLIENT_TRANSFER_CURLSFTPRESPONSE_H

#include <ISFtpResponse.h>
#include <SFtpRequest.h>
#include <SecuritySS.h>

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

/// The transfer object: performs one operation and then stands as its response.
///
/// It owns one libcurl easy handle from construction to destruction. One thread at a time may use it, not always the
/// same.
///
/// The operations return true on success and leave libcurl's result in `m_ErrorCode`, which keeps its first value, 2,
/// where no transfer took place. A failure writes a log record. `timeout` has an effect on the listing alone.
///
/// REQUIRES: the host has called `curl_global_init` and supplies the host services (platform/). What includes this
/// header is built with libcurl's headers, and linked with libcurl where it uses `curlHandle`.
class __attribute__((visibility("default"))) CurlSFtpResponse : public ISFtpResponse
{
public:
    /// Throws `std::runtime_error` when libcurl gives no handle.
    CurlSFtpResponse();
    ~CurlSFtpResponse() override;

    CurlSFtpResponse(const CurlSFtpResponse&) = delete;
    CurlSFtpResponse& operator=(const CurlSFtpResponse&) = delete;

    int GetErrCode() override;
    std::string GetErrString() override;

    /// As `ISFtpClient::DownLoadSFtpFile`, on this object.
    bool DownLoadSFtpFile(const SFtpRequest& request, uint32_t timeout);

    /// As `ISFtpClient::ReNameSFtpFile`, on this object.
    bool ReNameSFtpFile(const SFtpRequest& request, uint32_t timeout);

    /// As `ISFtpClient::DelSFtpFile`, on this object.
    bool DelSFtpFile(const SFtpRequest& request, uint32_t timeout);

    /// As `ISFtpClient::Listsftpdir`, on this object.
    bool Listsftpdir(const SFtpRequest& request, uint32_t timeout);

    /// As `ISFtpClient::UploadFileToSFtpServer`, on this object. True even when the transfer fails; false only when the
    /// local file could not be opened or measured.
    bool UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout);

    /// For the host: keeps `certText` in `cert` ("none" when it is empty) and lets the host's security service add its
    /// settings to `curlHandle`. Returns that service's answer. No operation calls it.
    SecuritySS_RC SetCert(const std::string& certText);

    /// Appends body data to `recvData`.
    void RecieveData(const std::string& data);

    /// Adds a line "name: value" to `headers`. A line with any other number of colons is dropped.
    void RecieveHeader(const std::string& line);

    /// Takes `statusCode` and `statusText` from a line "protocol code text"; a line whose second word is no number is
    /// logged and changes nothing, and one of a single word is passed over.
    void ParseStatusLine(const std::string& line);

    /// CURLOPT_WRITEFUNCTION: hands the block to `RecieveData` of `self`, a transfer object. Returns the block's size,
    /// or 0, which makes libcurl stop the transfer with 23, when a pointer is null or something derived from
    /// `std::exception` is thrown: memory runs out, or the host's log throws.
    static size_t GetDataCallback(void* ptr, size_t size, size_t nmemb, void* self);

    /// CURLOPT_HEADERFUNCTION, for the host to register on `curlHandle` with the object as CURLOPT_HEADERDATA: a line
    /// with a ":" goes to `RecieveHeader`, any other to `ParseStatusLine`. Returns as `GetDataCallback` does.
    static size_t GetHeaderCallback(void* ptr, size_t size, size_t nmemb, void* self);

    // What the callbacks collect is the host's to read, the handle its to register them on.
    uint32_t statusCode;    ///< of the last status line that had one; 0 at first
    std::string statusText; ///< never cleared: each status line adds its words
    int m_ErrorCode;        ///< libcurl's result, untranslated; 2 until a transfer was made
    std::string recvData;   ///< what `GetDataCallback` received; it grows without limit
    std::map<std::string, std::set<std::string>> headers; ///< the values of each name, told apart by letter case
    CURL* curlHandle;                                     ///< this object's, never null; cleaned up with it
    std::string cert;                                     ///< of `SetCert`
};

#endif
