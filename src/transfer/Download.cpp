#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/SftpWriteData.h"

bool CurlSFtpResponse::DownLoadSFtpFile(const SFtpRequest& request, uint32_t /*timeout*/)
{
    const std::string url = request.remotePath;
    UserPwd userPwd(request);
    const std::string localPath = request.localPath;
    const long port = static_cast<long>(request.port);

    LocalStream stream(fopen(localPath.c_str(), "w+"));
    if (!stream) {
        userPwd.wipe();
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile():open file failed. ");
        return false;
    }
    writeUnbuffered(stream);

    sftpSetCertTmp(curlHandle, request.caCert);
    curl_easy_setopt(curlHandle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_PORT, port);
    curl_easy_setopt(curlHandle, CURLOPT_USERPWD, userPwd.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_WRITEFUNCTION, sftp_write_data);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEDATA, stream.get());
    curl_easy_setopt(curlHandle, CURLOPT_CONNECTTIMEOUT, 20L);
    curl_easy_setopt(curlHandle, CURLOPT_NOSIGNAL, 1L);

    m_ErrorCode = curl_easy_perform(curlHandle);
    userPwd.wipe();
    if (m_ErrorCode != CURLE_OK) {
        // The listing's wording, which support knows from both.
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile() list dir failed.code:" << static_cast<unsigned int>(m_ErrorCode));
        return false;
    }
    stream.reset();
    SFTP_LOG(kLogEnd, "DownLoadSFtpFile():end ");
    return true;
}
