#include "Operations.h"

#include "output/StandardStreams.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <curl/curl.h>
#include <unistd.h>

namespace {

constexpr uint32_t kTimeout = 90;
constexpr int kNotRun = -1;
constexpr int kFailedStatus = 255;

int call(Operation operation, const SFtpRequest& request, std::string& errorText)
{
    SFtpClient client;
    switch (operation) {
    case Operation::Test:
        return ISFtpClient::CreateClient()->TestSConnect(request, kTimeout);
    case Operation::List:
        return client.Listsftpdir(request, errorText);
    case Operation::Get: {
        const Silenced trace(STDERR_FILENO);
        return client.DownLoadSFtpFile(request, errorText);
    }
    case Operation::Put:
        return client.UploadFileToSFtpServer(request, errorText);
    case Operation::Move:
        return client.ReNameSFtpFile(request, errorText);
    case Operation::Remove:
        return client.DelSFtpFile(request, errorText);
    }
    return kNotRun;
}

} // namespace

Outcome perform(Operation operation, const SFtpRequest& request)
{
    const Silenced output(STDOUT_FILENO);
    std::string errorText;
    const int code = call(operation, request, errorText);
    if (code == kNotRun) {
        return {code, "the library could not run it; see the log records above"};
    }
    // The library has no text for success, nor for any result of a connection test.
    return {code, errorText.empty() ? curl_easy_strerror(static_cast<CURLcode>(code)) : errorText};
}

int exitStatusOf(int code) { return code == kNotRun ? kFailedStatus : code; }
