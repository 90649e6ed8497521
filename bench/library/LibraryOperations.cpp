#include "Operations.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

namespace {

using Call = int (SFtpClient::*)(const SFtpRequest&, std::string&);

template <Call call>
int callFacade(const SFtpRequest& request)
{
    std::string errorText;
    return (SFtpClient().*call)(request, errorText);
}

int testConnection(const SFtpRequest& request) { return ISFtpClient::CreateClient()->TestSConnect(request, 0); }

} // namespace

const std::map<std::string, Operation>& operations()
{
    static const std::map<std::string, Operation> kOperations = {
        {"test", testConnection},
        {"download", callFacade<&SFtpClient::DownLoadSFtpFile>},
        {"upload", callFacade<&SFtpClient::UploadFileToSFtpServer>},
        {"list", callFacade<&SFtpClient::Listsftpdir>},
        {"rename", callFacade<&SFtpClient::ReNameSFtpFile>},
        {"delete", callFacade<&SFtpClient::DelSFtpFile>},
    };
    return kOperations;
}
