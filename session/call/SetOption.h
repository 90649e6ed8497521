#ifndef SFTPCLIENT_SESSION_SETOPTION_H
#define SFTPCLIENT_SESSION_SETOPTION_H

#include "call/Failure.h"

#include <curl/curl.h>

#include <new>
#include <string>

namespace session {

/// Throws `std::bad_alloc` if libcurl has no memory for an option, and `Failure` if it refuses it.
inline void require(CURLcode answer, CURLoption option)
{
    if (answer == CURLE_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    if (answer != CURLE_OK) {
        const curl_easyoption* const known = curl_easy_option_by_id(option);
        throw refusal(answer, std::string("libcurl does not take the option ") +
                                  (known != nullptr ? known->name : std::to_string(option)));
    }
}

template <typename Value>
void set(CURL* handle, CURLoption option, Value value)
{
    require(curl_easy_setopt(handle, option, value), option);
}

/// REQUIRES: `bytes` outlives the handle's use of it.
inline void setBlob(CURL* handle, CURLoption option, const std::string& bytes)
{
    curl_blob blob = {const_cast<char*>(bytes.data()), bytes.size(), CURL_BLOB_NOCOPY};
    set(handle, option, &blob);
}

} // namespace session

#endif
