#ifndef SFTPCLIENT_SESSION_FAILURE_H
#define SFTPCLIENT_SESSION_FAILURE_H

#include <curl/curl.h>

#include <stdexcept>
#include <string>

namespace session {

/// Ends a call: the code that it returns, and as `what()` the sentence about it.
class Failure : public std::runtime_error
{
public:
    Failure(CURLcode code, const std::string& text) : std::runtime_error(text), m_code(code) {}

    CURLcode code() const { return m_code; }

private:
    CURLcode m_code;
};

/// A failure that the session itself found: libcurl's text for `code`, and what was found.
inline Failure refusal(CURLcode code, const std::string& found)
{
    return {code, std::string(curl_easy_strerror(code)) + ": " + found};
}

} // namespace session

#endif
