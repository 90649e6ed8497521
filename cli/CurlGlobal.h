#ifndef SFTPCLIENT_CLI_CURLGLOBAL_H
#define SFTPCLIENT_CLI_CURLGLOBAL_H

#include <curl/curl.h>

#include <stdexcept>

/// libcurl, ready for use as long as this object lives. One in a process, made before there are threads.
class CurlGlobal
{
public:
    CurlGlobal()
    {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            throw std::runtime_error("libcurl cannot be initialised.");
        }
    }
    ~CurlGlobal() { curl_global_cleanup(); }
    CurlGlobal(const CurlGlobal&) = delete;
    CurlGlobal& operator=(const CurlGlobal&) = delete;
};

#endif
