// Linked into a test, these functions replace libcurl's.

#include "support/OpenHandles.h"

#include "support/NextFunction.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>

namespace {

std::atomic<int> handles{0};

const void* objectOf(const void* address)
{
    Dl_info info = {};
    return dladdr(address, &info) == 0 ? nullptr : info.dli_fbase;
}

} // namespace

int openHandles() { return handles; }

extern "C" CURL* curl_easy_init()
{
    static auto* const next = nextFunction<CURL*()>("curl_easy_init");
    const bool libcurls = objectOf(__builtin_return_address(0)) == objectOf(reinterpret_cast<const void*>(next));
    CURL* handle = next();
    if (handle != nullptr && !libcurls) {
        ++handles;
    }
    return handle;
}

extern "C" void curl_easy_cleanup(CURL* handle)
{
    static auto* const next = nextFunction<void(CURL*)>("curl_easy_cleanup");
    const bool libcurls = objectOf(__builtin_return_address(0)) == objectOf(reinterpret_cast<const void*>(next));
    if (handle != nullptr && !libcurls) {
        --handles;
    }
    next(handle);
}
