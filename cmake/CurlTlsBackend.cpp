// Prints the TLS back end of the libcurl that the build found, for example OpenSSL/3.0.19.
#include <curl/curl.h>

#include <cstdio>

int main()
{
    const char* backend = curl_version_info(CURLVERSION_NOW)->ssl_version;
    std::printf("%s", backend != nullptr ? backend : "nothing");
    return 0;
}
