#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/SftpWriteData.h"

bool CurlSFtpResponse::Listsftpdir(const SFtpRequest& request, uint32_t timeout)
{
    const std::string url = request.remotePath;
    UserPwd userPwd(request);
    const long port = static_cast<long>(request.port);

    // The "r" means nothing to fopen, which goes by the "w" and the "+".
    LocalStream stream(fopen(request.localPath.c_str(), "wr+"));
    if (!stream) {
        userPwd.wipe();
        SFTP_LOG(kLogFailure, "Listsftpdir():Open local file file failed.");
        return false;
    }
    writeUnbuffered(stream);

    sftpSetCertTmp(curlHandle, request.caCert);
    curl_easy_setopt(curlHandle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_PORT, port);
    curl_easy_setopt(curlHandle, CURLOPT_USERPWD, userPwd.c_str());
    // The one operation that goes by it.
    if (timeout != 0) {
        curl_easy_setopt(curlHandle, CURLOPT_FTP_RESPONSE_TIMEOUT, static_cast<long>(timeout));
    }
    curl_easy_setopt(curlHandle, CURLOPT_DIRLISTONLY, 1L);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEFUNCTION, sftp_write_data);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEDATA, stream.get());

    m_ErrorCode = curl_easy_perform(curlHandle);
    userPwd.wipe();
    if (m_ErrorCode != CURLE_OK) {
        SFTP_LOG(kLogFailure, "Listsftpdir() list dir failed.code:" << static_cast<unsigned int>(m_ErrorCode));
        return false;
    }
    stream.reset();
    SFTP_LOG(kLogEnd, "Listsftpdir():end ");
    return true;
}
