#include "SFtpClient.h"

#include "ISFtpClient.h"
#include "log/LogStatement.h"

// Unused, but part of what loading the library makes, next to the module's name.
[[maybe_unused]] static const std::string kLogName("LOG");

// Seconds; of the operations only the listing goes by it.
constexpr uint32_t kTimeout = 90;

SFtpClient::SFtpClient() : client(ISFtpClient::GetInstance()) {}

SFtpClient::~SFtpClient() { ISFtpClient::ReleaseInstance(client); }

// Five operations of one shape, written out because each names itself in its records, not always in the same way.

int SFtpClient::Listsftpdir(const SFtpRequest& request, std::string& errorText)
{
    if (client == nullptr) {
        SFTP_LOG(kLogFailure, "Listsftpdir(): SFtpClient is NULL. ");
        return -1;
    }
    const boost::shared_ptr<ISFtpResponse> response = client->Listsftpdir(request, kTimeout);
    if (!response) {
        SFTP_LOG(kLogFailure, "Listsftpdir():Return response is empty. ");
        return -1;
    }
    if (response->GetErrCode() == 0) {
        return 0;
    }
    errorText = response->GetErrString();
    SFTP_LOG(kLogFailure,
             "Listsftpdir():Send SFtp request occur network error. Error  is " << response->GetErrString());
    return response->GetErrCode();
}

int SFtpClient::DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    // Before anything else, even without a client.
    if (!CheckFileSizeBeforeDownload(request)) {
        return -1;
    }
    if (client == nullptr) {
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile(): SFtpClient is NULL. ");
        return -1;
    }
    const boost::shared_ptr<ISFtpResponse> response = client->DownLoadSFtpFile(request, kTimeout);
    if (!response) {
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile(): Return response is empty. ");
        return -1;
    }
    if (response->GetErrCode() == 0) {
        return 0;
    }
    errorText = response->GetErrString();
    SFTP_LOG(kLogFailure,
             "DownLoadSFtpFile(): Send SFtp request occur network error. Error  is " << response->GetErrString());
    return response->GetErrCode();
}

int SFtpClient::ReNameSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    if (client == nullptr) {
        SFTP_LOG(kLogFailure, "ReNameSFtpFile(): SFtpClient is NULL. ");
        return -1;
    }
    const boost::shared_ptr<ISFtpResponse> response = client->ReNameSFtpFile(request, kTimeout);
    if (!response) {
        SFTP_LOG(kLogFailure, "ReNameSFtpFile(): Return response is empty. ");
        return -1;
    }
    if (response->GetErrCode() == 0) {
        return 0;
    }
    errorText = response->GetErrString();
    SFTP_LOG(kLogFailure,
             "ReNameSFtpFile(): Send SFtp request occur network error. Error  is " << response->GetErrString());
    return response->GetErrCode();
}

int SFtpClient::DelSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    if (client == nullptr) {
        SFTP_LOG(kLogFailure, "DelSFtpFile(): SFtpClient is NULL. ");
        return -1;
    }
    const boost::shared_ptr<ISFtpResponse> response = client->DelSFtpFile(request, kTimeout);
    if (!response) {
        SFTP_LOG(kLogFailure, "DelSFtpFile():Return response is empty. ");
        return -1;
    }
    if (response->GetErrCode() == 0) {
        return 0;
    }
    errorText = response->GetErrString();
    SFTP_LOG(kLogFailure,
             "DelSFtpFile():Send SFtp request occur network error. Error  is " << response->GetErrString());
    return response->GetErrCode();
}

int SFtpClient::UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText)
{
    if (client == nullptr) {
        SFTP_LOG(kLogFailure, "UploadFileToServer, SFtpClient is NULL. ");
        return -1;
    }
    const boost::shared_ptr<ISFtpResponse> response = client->UploadFileToSFtpServer(request, kTimeout);
    if (!response) {
        SFTP_LOG(kLogFailure, "Return response is empty. ");
        return -1;
    }
    if (response->GetErrCode() == 0) {
        return 0;
    }
    errorText = response->GetErrString();
    SFTP_LOG(kLogFailure, "Send SFtp request occur network error. Error  is " << response->GetErrString());
    return response->GetErrCode();
}
