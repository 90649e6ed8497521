#include "CurlProcess.h"

#include <curl/curl.h>

#include <stdexcept>
#include <string>

CurlProcess::CurlProcess()
{
    const CURLcode answer = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (answer != CURLE_OK) {
        throw std::runtime_error(std::string("libcurl cannot be initialised: ") + curl_easy_strerror(answer));
    }
}

CurlProcess::~CurlProcess() { curl_global_cleanup(); }
