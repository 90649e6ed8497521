#ifndef SFTPCLIENT_SESSION_FAILURE_H
#define SFTPCLIENT_SESSION_FAILURE_H

#include <curl/curl.h>

#include <stdexcept>
#include <string>

namespace session {

/// CURLE_TOO_LARGE, which libcurl's headers have since 8.6: among others, for a reply that is too long.
constexpr CURLcode kTooLarge = static_cast<CURLcode>(100);

/// Ends a call: the code that it returns, and its text as `what()`.
class Failure : public std::runtime_error
{
public:
    Failure(CURLcode code, const std::string& text) : std::runtime_error(text), m_code(code) {}

    CURLcode code() const { return m_code; }

private:
    CURLcode m_code;
};

/// A failure that the session itself detected: libcurl's text for `code`, and what was detected.
inline Failure refusal(CURLcode code, const std::string& found)
{
    return {code, std::string(curl_easy_strerror(code)) + ": " + found};
}

} // namespace session

#endif
