#include "harness/ClientCalls.h"

#include "harness/Client.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <string>

namespace {

int codeOf(const boost::shared_ptr<ISFtpResponse>& response) { return response ? response->GetErrCode() : -1; }

} // namespace

int operate(unsigned operation, SFtpRequest request, std::uint32_t timeout)
{
    const boost::shared_ptr<ISFtpClient> client = ISFtpClient::CreateClient();
    switch (operation) {
    case 0:
        return client->TestSConnect(request, timeout);
    case 1:
        return codeOf(client->Listsftpdir(request, timeout));
    case 2:
        request.remotePath += "a.bak";
        return codeOf(client->DownLoadSFtpFile(request, timeout));
    case 3:
        request.localPath = "new.bak";
        return codeOf(client->ReNameSFtpFile(request, timeout));
    case 4:
        return codeOf(client->DelSFtpFile(request, timeout));
    default:
        request.remotePath += "up.bak";
        request.localPath = fileToSend();
        return codeOf(client->UploadFileToSFtpServer(request, timeout));
    }
}

int operateWithText(unsigned operation, SFtpRequest request)
{
    SFtpClient client;
    std::string errorText;
    switch (operation) {
    case 1:
        return client.Listsftpdir(request, errorText);
    case 2:
        request.remotePath += "a.bak";
        return client.DownLoadSFtpFile(request, errorText);
    case 3:
        request.localPath = "new.bak";
        return client.ReNameSFtpFile(request, errorText);
    case 4:
        return client.DelSFtpFile(request, errorText);
    default:
        request.remotePath += "up.bak";
        request.localPath = fileToSend();
        return client.UploadFileToSFtpServer(request, errorText);
    }
}
