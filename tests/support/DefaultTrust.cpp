// Lets a process see a trust store of its own where libcurl looks for the machine's. The size check and the upload
// set no CA, so without this a test or the demo would have to change the machine's store to run them over TLS.
//
// Linked into a test, or preloaded: the file that SFTPCLIENT_DEFAULT_TRUST names is opened in place of libcurl's
// built-in CA bundle. OpenSSL opens files through fopen64.

#include "NextFunction.h"

#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" __attribute__((visibility("default"))) FILE* fopen64(const char* path, const char* mode)
{
    static auto* const next = nextFunction<FILE*(const char*, const char*)>("fopen64");
    const char* const trust = std::getenv("SFTPCLIENT_DEFAULT_TRUST");
    const char* const bundle = curl_version_info(CURLVERSION_NOW)->cainfo;
    const bool asksForBundle = trust != nullptr && bundle != nullptr && std::strcmp(path, bundle) == 0;
    return next(asksForBundle ? trust : path, mode);
}
