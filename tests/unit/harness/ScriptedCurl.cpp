#include "harness/ScriptedCurl.h"

#include "harness/Memory.h"

#include <curl/curl.h>
#include <dlfcn.h>

namespace scripted {

Curl& curl()
{
    static Curl instance;
    return instance;
}

} // namespace scripted

using scripted::curl;

extern "C" CURL* curl_easy_init()
{
    static char handles[64];
    return curl().givesHandles ? &handles[curl().opened++ % sizeof handles] : nullptr;
}

extern "C" void curl_easy_cleanup(CURL* handle)
{
    const memory::Pause pause;
    curl().cleanedUp.push_back(handle);
}

extern "C" const char* curl_easy_strerror(CURLcode code)
{
    const memory::Pause pause;
    curl().asked.push_back(code);
    static const auto real = reinterpret_cast<decltype(&curl_easy_strerror)>(dlsym(RTLD_NEXT, "curl_easy_strerror"));
    return curl().knowsTexts ? real(code) : nullptr;
}
