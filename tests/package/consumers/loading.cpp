// A host that loads the library at run time and looks up the factory by name.
#include "OwnServices.h"

#include <ISFtpClient.h>

#include <curl/curl.h>
#include <dlfcn.h>

int main(int argc, char** argv)
{
    void* const library = argc == 2 ? dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        std::cerr << dlerror() << "\n";
        return 1;
    }
    void* const factory = dlsym(library, "_ZN11ISFtpClient11GetInstanceEv");
    void* const release = dlsym(library, "_ZN11ISFtpClient15ReleaseInstanceEPS_");
    if (factory == nullptr || release == nullptr) {
        std::cerr << dlerror() << "\n";
        return 1;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    ISFtpClient* const client = reinterpret_cast<ISFtpClient* (*)()>(factory)();
    SFtpRequest request;
    request.remotePath = "nosuchscheme://localhost/";
    request.localPath = "/dev/null";
    {
        const boost::shared_ptr<ISFtpResponse> response = client->Listsftpdir(request, 90);
        std::cout << response->GetErrCode() << " " << response->GetErrString() << "\n";
    }
    reinterpret_cast<void (*)(ISFtpClient*)>(release)(client);
    curl_global_cleanup();
    return dlclose(library);
}
