// The library offers no trace, no progress and no way to stop, and its public interface shall stay as it is. But it
// calls libcurl's curl_easy_perform through the dynamic symbol table, where the executable comes first: this definition
// stands before libcurl's, prepares the handle, and goes on to the real one.

#include "transfer/TransferSeam.h"

#include <dlfcn.h>
#include <sys/socket.h>

namespace {

// libcurl's function has no argument that could carry it.
TransferObserver* currentObserver = nullptr;

int trace(CURL* /*handle*/, curl_infotype type, char* data, size_t size, void* observer) noexcept
{
    if (type == CURLINFO_TEXT || type == CURLINFO_HEADER_IN || type == CURLINFO_HEADER_OUT) {
        static_cast<TransferObserver*>(observer)->traced(type, {data, size});
    }
    return 0;
}

int progress(void* observer, curl_off_t toReceive, curl_off_t received, curl_off_t toSend, curl_off_t sent) noexcept
{
    return static_cast<TransferObserver*>(observer)->goesOn({received, toReceive, sent, toSend}) ? 0 : 1;
}

void prepare(CURL* handle, TransferObserver& observer)
{
    if (observer.begins()) {
        curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
    }
    // Without --trace, too: the library's size check is talkative by itself, password included, and says it all to
    // standard error unless there is this function.
    curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, trace);
    curl_easy_setopt(handle, CURLOPT_DEBUGDATA, &observer);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, progress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &observer);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

TransferAmounts amountsOf(CURL* handle)
{
    TransferAmounts amounts;
    curl_easy_getinfo(handle, CURLINFO_SIZE_DOWNLOAD_T, &amounts.received);
    curl_easy_getinfo(handle, CURLINFO_SIZE_UPLOAD_T, &amounts.sent);
    return amounts;
}

// A handle says goodbye to its server when it is cleaned up, and waits for the answer with nobody to stop it: two
// minutes, where a silent server was the reason to stop.
void hangUp(CURL* handle)
{
    curl_socket_t connection = CURL_SOCKET_BAD;
    if (curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &connection) == CURLE_OK && connection != CURL_SOCKET_BAD) {
        shutdown(connection, SHUT_RDWR);
    }
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
    observer->ended(result, amountsOf(handle));
    if (result == CURLE_ABORTED_BY_CALLBACK) {
        hangUp(handle);
    }
    return result;
}

ObservedTransfers::ObservedTransfers(TransferObserver& observer) { currentObserver = &observer; }

ObservedTransfers::~ObservedTransfers() { currentObserver = nullptr; }
