#ifndef SUPPORT_CURLRELEASE_H
#define SUPPORT_CURLRELEASE_H

#include <curl/curl.h>

/// Whether the libcurl that runs behaves like 8.14.1 where that differs from 7.88.1. Those between are not tested.
inline bool isCurl814() { return curl_version_info(CURLVERSION_NOW)->version_num >= 0x080e00; }

/// The result of a data connection that breaks: only the later libcurl asks for a close_notify.
inline CURLcode brokenData() { return isCurl814() ? CURLE_RECV_ERROR : CURLE_PARTIAL_FILE; }

#endif
