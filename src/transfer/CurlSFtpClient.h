#ifndef SFTPCLIENT_TRANSFER_CURLSFTPCLIENT_H
#define SFTPCLIENT_TRANSFER_CURLSFTPCLIENT_H

#include <ISFtpClient.h>

/// The one `ISFtpClient`: makes a transfer object for each call, runs the operation on it and hands it back as the
/// response. It holds no state; any number of threads may use one object.
class __attribute__((visibility("default"))) CurlSFtpClient : public ISFtpClient
{
public:
    CurlSFtpClient();
    ~CurlSFtpClient() override;

    int TestSConnect(const SFtpRequest& request, uint32_t timeout) override;
    boost::shared_ptr<ISFtpResponse> Listsftpdir(const SFtpRequest& request, uint32_t timeout) override;
    boost::shared_ptr<ISFtpResponse> DownLoadSFtpFile(const SFtpRequest& request, uint32_t timeout) override;
    boost::shared_ptr<ISFtpResponse> ReNameSFtpFile(const SFtpRequest& request, uint32_t timeout) override;
    boost::shared_ptr<ISFtpResponse> DelSFtpFile(const SFtpRequest& request, uint32_t timeout) override;
    boost::shared_ptr<ISFtpResponse> UploadFileToSFtpServer(const SFtpRequest& request, uint32_t timeout) override;
};

#endif
