// A whole session of the library's with a server whose replies are the fuzzer's: the first byte chooses the operation,
// the rest is the script of the playback, which also says where TLS begins.
#include "harness/Client.h"
#include "harness/Require.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <curl/curl.h>

#include <cstdint>

namespace {

int codeOf(const boost::shared_ptr<ISFtpResponse>& response) { return response ? response->GetErrCode() : -1; }

int operate(uint8_t choice, SFtpRequest request)
{
    const boost::shared_ptr<ISFtpClient> client = ISFtpClient::CreateClient();
    std::string errorText;
    switch (choice % 8) { // "0" is the first, for inputs written by hand
    case 0:
        return client->TestSConnect(request, 0);
    case 1:
        return codeOf(client->Listsftpdir(request, 1));
    case 2:
        request.remotePath += "a.bak";
        return codeOf(client->DownLoadSFtpFile(request, 0));
    case 3:
        request.remotePath += "a.bak";
        return SFtpClient().DownLoadSFtpFile(request, errorText);
    case 4:
        request.localPath = "new.bak";
        return codeOf(client->ReNameSFtpFile(request, 0));
    case 5:
        return codeOf(client->DelSFtpFile(request, 0));
    default:
        request.remotePath += "up.bak";
        request.localPath = fileToSend();
        return codeOf(client->UploadFileToSFtpServer(request, 0));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0) {
        runAgainst(std::string(reinterpret_cast<const char*>(data + 1), size - 1), [data](const SFtpRequest& request) {
            const int code = operate(data[0], request);
            require(code >= -1 && code < CURL_LAST, "the result is one of libcurl's or -1");
        });
    }
    return 0;
}
