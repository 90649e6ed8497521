#include "operation/HostOperations.h"

#include "output/StandardStreams.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <unistd.h>

namespace {

constexpr uint32_t kTimeout = 90;

} // namespace

int performAsHost(Operation operation, const SFtpRequest& request, std::string& errorText)
{
    const Silenced output(STDOUT_FILENO);
    SFtpClient client;
    switch (operation) {
    case Operation::Test:
        return ISFtpClient::CreateClient()->TestSConnect(request, kTimeout);
    case Operation::List:
        return client.Listsftpdir(request, errorText);
    case Operation::Get:
        return client.DownLoadSFtpFile(request, errorText);
    case Operation::Put:
        return client.UploadFileToSFtpServer(request, errorText);
    case Operation::Move:
        return client.ReNameSFtpFile(request, errorText);
    case Operation::Remove:
        return client.DelSFtpFile(request, errorText);
    default: // SFtpClient has no others
        return kNotRun;
    }
}
