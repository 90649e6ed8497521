// SFtpClient offers no trace, no progress and no way to stop, and sessions offer no trace; their interfaces shall stay
// as they are. But they call libcurl through the dynamic symbol table, where the executable comes first: these
// definitions stand before libcurl's, prepare the handle, and go on to the real ones.

#include "operation/TransferSeam.h"

#include <dlfcn.h>

namespace {

// libcurl's function has no argument that could carry it.
TransferObserver* currentObserver = nullptr;
TranscriptObserver* currentReader = nullptr;

// The observer sets the limits: none of libcurl's own may come before them.
constexpr long kLongestReplySeconds = 7L * 24 * 3600;

int trace(CURL* /*handle*/, curl_infotype type, char* data, size_t size, void* observer) noexcept
{
    static_cast<TransferObserver*>(observer)->traced(type, {data, size});
    return 0;
}

int traceSession(CURL* /*handle*/, curl_infotype type, char* data, size_t size, void* reader) noexcept
{
    static_cast<TranscriptObserver*>(reader)->traced(type, {data, size});
    return 0;
}

int progress(void* observer, curl_off_t toReceive, curl_off_t received, curl_off_t toSend, curl_off_t sent) noexcept
{
    return static_cast<TransferObserver*>(observer)->goesOn({received, toReceive, sent, toSend}) ? 0 : 1;
}

int connected(void* observer, char* /*server*/, char* /*own*/, int /*serverPort*/, int /*ownPort*/) noexcept
{
    static_cast<TransferObserver*>(observer)->connected();
    return CURL_PREREQFUNC_OK;
}

void prepare(CURL* handle, TransferObserver& observer)
{
    // Without --trace, too: the replies count, and the library's size check is talkative by itself, password included,
    // and says it all to standard error unless there is this function.
    curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, trace);
    curl_easy_setopt(handle, CURLOPT_DEBUGDATA, &observer);
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

TransferAmounts amountsOf(CURL* handle)
{
    TransferAmounts amounts;
    curl_easy_getinfo(handle, CURLINFO_SIZE_DOWNLOAD_T, &amounts.received);
    curl_easy_getinfo(handle, CURLINFO_SIZE_UPLOAD_T, &amounts.sent);
    return amounts;
}

} // namespace

extern "C" __attribute__((visibility("default"))) CURLcode curl_easy_perform(CURL* handle)
{
    static auto* const next = reinterpret_cast<CURLcode (*)(CURL*)>(dlsym(RTLD_NEXT, "curl_easy_perform"));
    TransferObserver* const observer = currentObserver;
    if (observer == nullptr || handle == nullptr) {
        return next(handle);
    }
    prepare(handle, *observer);
    const CURLcode result = next(handle);
    return observer->ended(result, amountsOf(handle));
}

extern "C" __attribute__((visibility("default"))) CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    static auto* const next = reinterpret_cast<CURLMcode (*)(CURLM*, CURL*)>(dlsym(RTLD_NEXT, "curl_multi_add_handle"));
    if (currentReader != nullptr) {
        currentReader->transferBegins();
        curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
        curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, traceSession);
        curl_easy_setopt(handle, CURLOPT_DEBUGDATA, currentReader);
    }
    return next(multi, handle);
}

ObservedTransfers::ObservedTransfers(TransferObserver& observer) { currentObserver = &observer; }

ObservedTransfers::~ObservedTransfers() { currentObserver = nullptr; }

ObservedSessions::ObservedSessions(TranscriptObserver& observer) { currentReader = &observer; }

ObservedSessions::~ObservedSessions() { currentReader = nullptr; }
