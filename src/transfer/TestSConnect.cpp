#include "log/LogStatement.h"
#include "tls/TlsTrust.h"
#include "transfer/CallResources.h"
#include "transfer/CurlSFtpClient.h"

int CurlSFtpClient::TestSConnect(const SFtpRequest& request, uint32_t /*timeout*/)
{
    SFTP_LOG(kLogDetail, "begin test sftp connection");
    const std::string address = request.remotePath;
    UserPwd userPwd(request);
    const long port = static_cast<long>(request.port);
    SFTP_LOG(kLogDetail, "== remotePath is: " << address);

    // The joined text is never empty, for it holds at least the ":": an empty user name is no obstacle. The record's
    // misspelling is what hosts know.
    if (address.empty() || userPwd.empty()) {
        userPwd.wipe();
        SFTP_LOG(kLogFailure, "remotePath or userPwd is emputy.");
        return -1;
    }
    EasyHandle handle(curl_easy_init());
    if (!handle) {
        userPwd.wipe();
        SFTP_LOG(kLogDetail, "curl initialize failed.");
        return -1;
    }

    // The TLS step comes last here, and no write callback is set: what the address holds goes to standard output.
    curl_easy_setopt(handle.get(), CURLOPT_URL, address.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PORT, port);
    curl_easy_setopt(handle.get(), CURLOPT_USERPWD, userPwd.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_CONNECTTIMEOUT, 20L);
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    sftpSetCertTmp(handle.get(), request.caCert);

    const CURLcode result = curl_easy_perform(handle.get());
    SFTP_LOG(kLogDetail, "errorCode is: " << static_cast<int>(result));
    handle.reset();
    userPwd.wipe();
    return result;
}
