#ifndef SFTPCLIENT_TRANSFER_EASYHANDLE_H
#define SFTPCLIENT_TRANSFER_EASYHANDLE_H

#include <curl/curl.h>

#include <memory>

struct EasyHandleCleanup
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

/// A libcurl easy handle that lives for one call.
using EasyHandle = std::unique_ptr<CURL, EasyHandleCleanup>;

#endif
