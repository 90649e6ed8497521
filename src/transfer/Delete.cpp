#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/RemoteDirPath.h"
#include "transfer/SftpWriteData.h"

bool CurlSFtpResponse::DelSFtpFile(const SFtpRequest& request, uint32_t /*timeout*/)
{
    const std::string url = request.remotePath;
    UserPwd userPwd(request);
    const long port = static_cast<long>(request.port);

    std::string remoteDirPath;
    if (!findRemoteDirPath(url, remoteDirPath)) {
        userPwd.wipe();
        // The rename's text, for the delete too.
        SFTP_LOG(kLogFailure, "ReNameSFtpFile(): get localpath error. ");
        return false;
    }
    LocalStream stream(fopen("/dev/null", "w+"));
    if (!stream) {
        userPwd.wipe();
        // Not a failure's level, unlike the download's.
        SFTP_LOG(kLogEnd, "DelSFtpFile():open file failed. ");
        return false;
    }
    const std::string command = "rm " + remoteDirPath + request.remoteFileName;

    sftpSetCertTmp(curlHandle, request.caCert);
    curl_slist* commands = makePostTransferCommand(command); // never freed
    curl_easy_setopt(curlHandle, CURLOPT_POSTQUOTE, commands);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEFUNCTION, sftp_write_data);
    curl_easy_setopt(curlHandle, CURLOPT_WRITEDATA, stream.get());
    curl_easy_setopt(curlHandle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curlHandle, CURLOPT_PORT, port);
    curl_easy_setopt(curlHandle, CURLOPT_USERPWD, userPwd.c_str());

    m_ErrorCode = curl_easy_perform(curlHandle);
    userPwd.wipe();
    if (m_ErrorCode != CURLE_OK) {
        // The listing's wording, which support knows from both.
        SFTP_LOG(kLogFailure, "DelSFtpFile() list dir failed.code:" << static_cast<unsigned int>(m_ErrorCode));
        return false;
    }
    stream.reset();
    SFTP_LOG(kLogEnd, "DelSFtpFile():end ");
    return true;
}
