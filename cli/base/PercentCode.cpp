#include "base/PercentCode.h"

#include "base/UsageError.h"

#include <curl/curl.h>

#include <cctype>
#include <memory>
#include <new>

namespace {

using CurlText = std::unique_ptr<char, decltype(&curl_free)>;

bool isDigit(char character) { return std::isxdigit(static_cast<unsigned char>(character)) != 0; }

} // namespace

std::string percentDecoded(const std::string& text)
{
    // libcurl leaves a "%" that begins nothing as it is.
    for (std::string::size_type at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
        if (!isDigit(text[at + 1]) || !isDigit(text[at + 2])) {
            throw UsageError("URL must hold two hexadecimal digits after each \"%\": write %25 for a \"%\" itself.");
        }
    }
    int size = 0;
    const CurlText decoded(curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &size), curl_free);
    if (!decoded) {
        throw std::bad_alloc();
    }
    return {decoded.get(), static_cast<std::size_t>(size)};
}

std::string percentEncoded(const std::string& text)
{
    const CurlText encoded(curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), curl_free);
    if (!encoded) {
        throw std::bad_alloc();
    }
    return encoded.get();
}
