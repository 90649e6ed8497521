#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/RemoteDirPath.h"

bool CurlSFtpResponse::ReNameSFtpFile(const SFtpRequest& request, uint32_t /*timeout*/)
{
    const std::string url = request.remotePath;
    UserPwd userPwd(request);
    const long port = static_cast<long>(request.port);

    std::string remoteDirPath;
    if (!findRemoteDirPath(url, remoteDirPath)) {
        userPwd.wipe();
        // It speaks of the local path, though it is the URL that has no directory.
        SFTP_LOG(kLogFailure, "ReNameSFtpFile(): get localpath error. ");
        return false;
    }
    // Only opened and closed: libcurl does not get it, so the listing of the visit goes to standard output.
    LocalStream stream(fopen("/dev/null", "w+"));
    if (!stream) {
        userPwd.wipe();
        // Not a failure's level, unlike the download's.
        SFTP_LOG(kLogEnd, "ReNameSFtpFile():open file failed. ");
        return false;
    }
    const std::string oldPath = remoteDirPath + request.remoteFileName;
    const std::string newPath = remoteDirPath + request.localPath;

    sftpSetCertTmp(curlHandle, request.caCert);
    const std::string command = "rename " + oldPath + " " + newPath;
    curl_slist* commands = makePostTransferCommand(command); // never freed
    curl_easy_setopt(curlHandle, CURLOPT_POSTQUOTE, commands);
    curl_easy_setopt(curlHandle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_PORT, port);
    curl_easy_setopt(curlHandle, CURLOPT_USERPWD, userPwd.c_str());

    m_ErrorCode = curl_easy_perform(curlHandle);
    userPwd.wipe();
    if (m_ErrorCode != CURLE_OK) {
        SFTP_LOG(kLogFailure, "ReNameSFtpFile() rename file failed.code:" << static_cast<unsigned int>(m_ErrorCode));
        return false;
    }
    stream.reset();
    SFTP_LOG(kLogEnd, "ReNameSFtpFile():end ");
    return true;
}
