// A host with the ready services: asks for a listing that libcurl refuses at once.
#include <SFtpClient.h>

#include <curl/curl.h>

#include <iostream>

int main()
{
    curl_global_init(CURL_GLOBAL_DEFAULT);
    SFtpRequest request;
    request.remotePath = "nosuchscheme://localhost/";
    request.localPath = "/dev/null";
    std::string errorText;
    const int result = SFtpClient().Listsftpdir(request, errorText);
    std::cout << result << " " << errorText << "\n";
    curl_global_cleanup();
    return 0;
}
