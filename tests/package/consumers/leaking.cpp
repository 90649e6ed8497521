// A host that renames and deletes under LeakSanitizer, and leaks memory itself if it gets an argument.
#include "OwnServices.h"

#include <SFtpClient.h>

#include <curl/curl.h>

namespace {

char* volatile memory = nullptr;

void loseMemory()
{
    memory = new char[4321];
    memory = nullptr;
}

} // namespace

int main(int argc, char** /*argv*/)
{
    curl_global_init(CURL_GLOBAL_DEFAULT);
    SFtpRequest request;
    request.remotePath = "nosuchscheme://localhost/";
    request.remoteFileName = "old";
    request.localPath = "new";
    std::string errorText;
    SFtpClient client;
    std::cout << client.ReNameSFtpFile(request, errorText) << " ";
    std::cout << client.DelSFtpFile(request, errorText) << std::endl; // LeakSanitizer may end the process
    curl_global_cleanup();
    if (argc > 1) {
        loseMemory();
    }
    return 0;
}
