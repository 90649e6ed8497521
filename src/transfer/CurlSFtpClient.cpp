#include "transfer/CurlSFtpClient.h"

#include "log/LogStatement.h"
#include "transfer/CurlSFtpResponse.h"

#include <exception>

// Unused, but part of what loading the library makes, next to the module's name.
[[maybe_unused]] static const std::string kLogName("LOG");

CurlSFtpClient::CurlSFtpClient() = default;
CurlSFtpClient::~CurlSFtpClient() = default;

// Five wrappers of one shape, written out because each names itself in its records. The operation's own result is not
// looked at: the caller reads it from the response. The class that the texts name is none of this library's.

boost::shared_ptr<ISFtpResponse> CurlSFtpClient::Listsftpdir(const SFtpRequest& request, uint32_t timeout)
{
    CurlSFtpResponse* transfer = nullptr;
    boost::shared_ptr<ISFtpResponse> response;
    try {
        transfer = new CurlSFtpResponse;
        response.reset(transfer);
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "Listsftpdir():, Create  CurlHttpClient object failed." << error.what());
        return boost::shared_ptr<ISFtpResponse>();
    }
    transfer->Listsftpdir(request, timeout);
    return response;
}

boost::shared_ptr<ISFtpResponse> CurlSFtpClient::DownLoadSFtpFile(const SFtpRequest& request, uint32_t timeout)
{
    CurlSFtpResponse* transfer = nullptr;
    boost::shared_ptr<ISFtpResponse> response;
    try {
        transfer = new CurlSFtpResponse;
        response.reset(transfer);
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "DownLoadSFtpFile():, Create  CurlHttpClient object failed." << error.what());
        return boost::shared_ptr<ISFtpResponse>();
    }
    transfer->DownLoadSFtpFile(request, timeout);
    return response;
}

boost::shared_ptr<ISFtpResponse> CurlSFtpClient::ReNameSFtpFile(const SFtpRequest& request, uint32_t timeout)
{
    CurlSFtpResponse* transfer = nullptr;
    boost::shared_ptr<ISFtpResponse> response;
    try {
        transfer = new CurlSFtpResponse;
        response.reset(transfer);
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "ReNameSFtpFile():, Create  CurlHttpClient object failed." << error.what());
        return boost::shared_ptr<ISFtpResponse>();
    }
    transfer->ReNameSFtpFile(request, timeout);
    return response;
}

boost::shared_ptr<ISFtpResponse> CurlSFtpClient::DelSFtpFile(const SFtpRequest& request, uint32_t timeout)
{
    CurlSFtpResponse* transfer = nullptr;
    boost::shared_ptr<ISFtpResponse> response;
    try {
        transfer = new CurlSFtpResponse;
        response.reset(transfer);
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "DelSFtpFile():, Create  CurlHttpClient object failed." << error.what());
        return boost::shared_ptr<ISFtpResponse>();
    }
    transfer->DelSFtpFile(request, timeout);
    return response;
}

boost::shared_ptr<ISFtpResponse> CurlSFtpClient::UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout)
{
    CurlSFtpResponse* transfer = nullptr;
    boost::shared_ptr<ISFtpResponse> response;
    try {
        transfer = new CurlSFtpResponse;
        response.reset(transfer);
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "UploadFileToSFtpServer, Create  CurlHttpClient object failed." << error.what());
        return boost::shared_ptr<ISFtpResponse>();
    }
    transfer->UploadFileToSFtpServer(request, timeout);
    return response;
}
