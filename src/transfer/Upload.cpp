#include "log/LogStatement.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpResponse.h"

#include <sys/stat.h>

// No TLS step: unlike every other transfer, the upload runs with libcurl's defaults for the scheme of its URL.
bool CurlSFtpResponse::UploadFileToSFtpServer(const SFtpRequest& request, uint32_t /*timeout*/)
{
    const std::string url = request.remotePath;
    UserPwd userPwd(request);
    const long port = static_cast<long>(request.port);

    LocalStream stream(fopen(request.localPath.c_str(), "rb"));
    if (!stream) {
        userPwd.wipe();
        SFTP_LOG(kLogFailure, "Open local file file failed.");
        return false;
    }
    struct stat status = {};
    if (fstat(fileno(stream.get()), &status) != 0) {
        userPwd.wipe();
        SFTP_LOG(kLogFailure, "Get the attachment file size failed.");
        return false;
    }

    curl_easy_setopt(curlHandle, CURLOPT_WRITEFUNCTION, CurlSFtpResponse::GetDataCallback);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(curlHandle, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curlHandle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_PORT, port);
    curl_easy_setopt(curlHandle, CURLOPT_USERPWD, userPwd.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR_RETRY));
    curl_easy_setopt(curlHandle, CURLOPT_CONNECTTIMEOUT, 20L);
    curl_easy_setopt(curlHandle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curlHandle, CURLOPT_READDATA, stream.get());
    curl_easy_setopt(curlHandle, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(status.st_size));

    m_ErrorCode = curl_easy_perform(curlHandle);
    userPwd.wipe();
    if (m_ErrorCode != CURLE_OK) {
        SFTP_LOG(kLogFailure,
                 "Perform upload file failed, m_ErrorCodeis " << GetErrCode() << ", errorString is" << GetErrString());
    }
    // No record of success, and true for a failed transfer: callers go by GetErrCode.
    return true;
}
