#include "SFtpClient.h"

#include "log/LogStatement.h"
#include "transfer/CallResources.h"

namespace {

// In bytes; a file of exactly the limit is refused.
constexpr curl_off_t kRetentionDatabaseLimit = 104857600;
constexpr curl_off_t kFileLimit = 53687091200;

curl_off_t sizeLimitOf(const std::string& fileName)
{
    return fileName == "RetentionDB.db" ? kRetentionDatabaseLimit : kFileLimit;
}

} // namespace

// Every way out wipes the credentials and then cleans the handle up: the destructors do both, in that order.
bool SFtpClient::CheckFileSizeBeforeDownload(const SFtpRequest& request)
{
    curl_off_t remoteFileSizeByte = -1;
    const EasyHandle handle(curl_easy_init());
    if (!handle) {
        SFTP_LOG(kLogFailure, "nullptr.");
        return false;
    }
    const std::string url = request.remotePath;
    const UserPwd userPwd(request);
    // Without a "/" rfind gives npos, and npos + 1 is 0: the whole path is the name.
    const std::string fileName = request.localPath.substr(request.localPath.rfind('/') + 1);
    const curl_off_t fileSizeLimit = sizeLimitOf(fileName);

    // No TLS step, no sink and no time-out: libcurl's trace goes to standard error, its header lines to standard
    // output.
    curl_easy_setopt(handle.get(), CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PORT, static_cast<long>(request.port));
    curl_easy_setopt(handle.get(), CURLOPT_USERPWD, userPwd.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_NOBODY, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_HEADER, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_FILETIME, 1L);

    const CURLcode performed = curl_easy_perform(handle.get());
    if (performed != CURLE_OK) {
        SFTP_LOG(kLogFailure, "curl_easy_perform fail, res =" << curl_easy_strerror(performed));
        // A missing file is left to the download, which reports it.
        return performed == CURLE_REMOTE_FILE_NOT_FOUND;
    }
    const CURLcode asked = curl_easy_getinfo(handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &remoteFileSizeByte);
    if (asked != CURLE_OK) {
        SFTP_LOG(kLogFailure, "get file size failed. ret = " << curl_easy_strerror(asked));
        return asked == CURLE_REMOTE_FILE_NOT_FOUND;
    }
    SFTP_LOG(kLogDetail, "remoteFileSizeByte =" << remoteFileSizeByte << ", fileSizeLimit = " << fileSizeLimit);
    // Only -1 means that the size is unknown.
    if (remoteFileSizeByte == -1 || remoteFileSizeByte >= fileSizeLimit) {
        SFTP_LOG(kLogFailure, "file size is invalid.");
        return false;
    }
    return true;
}
