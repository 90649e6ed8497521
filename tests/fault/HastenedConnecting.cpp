#include "HastenedConnecting.h"

#include "support/NextFunction.h"

#include <curl/curl.h>

#include <cstdarg>

// curl.h turns it into a macro of the same name, to check types.
#undef curl_easy_setopt

namespace {

constexpr long kMillisecondsPerSecond = 50;

thread_local bool hastened = false;

} // namespace

HastenedConnecting::HastenedConnecting() { hastened = true; }

HastenedConnecting::~HastenedConnecting() { hastened = false; }

// The type of the second parameter is curl.h's, and clang would rather have another in front of "...".
#pragma GCC diagnostic ignored "-Wvarargs"

// Replaces libcurl's for the library.
extern "C" CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    static auto* const next = nextFunction<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt");
    va_list arguments;
    va_start(arguments, option);
    const int kind = option / 10000 * 10000;
    CURLcode result = CURLE_OK;
    if (kind == CURLOPTTYPE_OFF_T) {
        result = next(handle, option, va_arg(arguments, curl_off_t));
    } else if (kind != CURLOPTTYPE_LONG) {
        result = next(handle, option, va_arg(arguments, void*));
    } else {
        const long value = va_arg(arguments, long);
        const bool faster = hastened && option == CURLOPT_CONNECTTIMEOUT;
        result = faster ? next(handle, CURLOPT_CONNECTTIMEOUT_MS, value * kMillisecondsPerSecond)
                        : next(handle, option, value);
    }
    va_end(arguments);
    return result;
}
