// SFtpClient offers no trace, no progress and no way to stop, and sessions offer no trace; their interfaces shall stay
// as they are. But they call libcurl through the dynamic symbol table, where the executable comes first: these
// definitions stand before libcurl's, prepare the handle, and go on to the real ones.

#include "operation/TransferSeam.h"

#include <dlfcn.h>

namespace {

// The observer sets the limits: none of libcurl's own may come before them.
constexpr long kLongestReplySeconds = 7L * 24 * 3600;

template <typename Observer>
int trace(CURL* /*handle*/, curl_infotype type, char* data, size_t size, void* observer) noexcept
{
    static_cast<Observer*>(observer)->traced(type, {data, size});
    return 0;
}

// Without --trace, too: the replies count, and the library's size check is talkative by itself, password included, and
// says it all to standard error unless there is this function.
template <typename Observer>
void letTrace(CURL* handle, Observer& observer)
{
    curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, trace<Observer>);
    curl_easy_setopt(handle, CURLOPT_DEBUGDATA, &observer);
}

int progress(void* observer, curl_off_t toReceive, curl_off_t received, curl_off_t toSend, curl_off_t sent) noexcept
{
    return static_cast<TransferObserver*>(observer)->goesOn(received + sent, toReceive + toSend) ? 0 : 1;
}

int connected(void* observer, char* /*server*/, char* /*own*/, int /*serverPort*/, int /*ownPort*/) noexcept
{
    static_cast<TransferObserver*>(observer)->connected();
    return CURL_PREREQFUNC_OK;
}

void prepare(CURL* handle, TransferObserver& observer)
{
    letTrace(handle, observer);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, progress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &observer);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, connected);
    curl_easy_setopt(handle, CURLOPT_PREREQDATA, &observer);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, static_cast<long>(observer.begins().count()));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, 0L);
    curl_easy_setopt(handle, CURLOPT_FTP_RESPONSE_TIMEOUT, kLongestReplySeconds);
    // So that libcurl says QUIT while the observer can still end the wait for the answer: at the handle's cleanup,
    // nobody could, for two minutes.
    curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 1L);
}

curl_off_t bytesOf(CURL* handle)
{
    curl_off_t received = 0;
    curl_off_t sent = 0;
    curl_easy_getinfo(handle, CURLINFO_SIZE_DOWNLOAD_T, &received);
    curl_easy_getinfo(handle, CURLINFO_SIZE_UPLOAD_T, &sent);
    return received + sent;
}

} // namespace

extern "C" __attribute__((visibility("default"))) CURLcode curl_easy_perform(CURL* handle)
{
    static auto* const next = reinterpret_cast<CURLcode (*)(CURL*)>(dlsym(RTLD_NEXT, "curl_easy_perform"));
    TransferObserver* const observer = ObservedTransfers::current;
    if (observer == nullptr || handle == nullptr) {
        return next(handle);
    }
    prepare(handle, *observer);
    const CURLcode result = next(handle);
    return observer->ended(result, bytesOf(handle));
}

extern "C" __attribute__((visibility("default"))) CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    static auto* const next = reinterpret_cast<CURLMcode (*)(CURLM*, CURL*)>(dlsym(RTLD_NEXT, "curl_multi_add_handle"));
    if (TranscriptObserver* const observer = ObservedSessions::current) {
        observer->transferBegins();
        letTrace(handle, *observer);
    }
    return next(multi, handle);
}
