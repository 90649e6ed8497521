#ifndef SFTPCLIENT_SESSION_FAILURE_H
#define SFTPCLIENT_SESSION_FAILURE_H

#include <curl/curl.h>

#include <string>

namespace session {

/// Ends a call: the code that it returns, and the sentence about it. Thrown.
struct Failure
{
    CURLcode code;
    std::string text;
};

/// A failure that the session itself found: libcurl's text for `code`, and what was found.
inline Failure refusal(CURLcode code, const std::string& found)
{
    return {code, std::string(curl_easy_strerror(code)) + ": " + found};
}

} // namespace session

#endif
