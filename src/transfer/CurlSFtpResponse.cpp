#include "transfer/CurlSFtpResponse.h"

#include "log/LogStatement.h"

#include <stdexcept>

CurlSFtpResponse::CurlSFtpResponse() : statusCode(0), m_ErrorCode(CURLE_FAILED_INIT), curlHandle(curl_easy_init())
{
    if (curlHandle == nullptr) {
        throw std::runtime_error("curl initialize failed.");
    }
}

CurlSFtpResponse::~CurlSFtpResponse()
{
    if (curlHandle != nullptr) {
        curl_easy_cleanup(curlHandle);
        curlHandle = nullptr;
    }
}

int CurlSFtpResponse::GetErrCode()
{
    // Callers know a refused access as a missing remote file.
    return m_ErrorCode == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : m_ErrorCode;
}

std::string CurlSFtpResponse::GetErrString()
{
    std::string text = "UnKown error"; // spelled as hosts know it
    // The text of the code as libcurl gave it, not of the one that GetErrCode reports.
    const char* known = curl_easy_strerror(static_cast<CURLcode>(m_ErrorCode));
    if (known != nullptr) {
        text = known;
    }
    SFTP_LOG(kLogFailure, "Get error string: " << text);
    return text;
}

SecuritySS_RC CurlSFtpResponse::SetCert(const std::string& certText)
{
    cert = "none";
    if (!certText.empty()) {
        cert = certText;
    }
    return SecuritySS::enrichSSL(curlHandle, cert);
}
