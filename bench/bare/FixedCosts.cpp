// Listings as the library does not make them, to tell what its way costs.

#include "Bare.h"

namespace {

struct MultiCleanUp
{
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using Multi = std::unique_ptr<CURLM, MultiCleanUp>;

constexpr int kPollMilliseconds = 10;

} // namespace

int bareListPolled(const SFtpRequest& request)
{
    const Multi multi(curl_multi_init());
    const Handle handle(curl_easy_init());
    const Stream stream(fopen(request.localPath.c_str(), "w+"));
    setListing(handle, request, stream);
    curl_multi_add_handle(multi.get(), handle.get());
    int running = 1;
    while (running != 0 && curl_multi_perform(multi.get(), &running) == CURLM_OK) {
        curl_multi_poll(multi.get(), nullptr, 0, kPollMilliseconds, nullptr);
    }
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi.get(), &left);
    const int code = message == nullptr ? -1 : message->data.result;
    curl_multi_remove_handle(multi.get(), handle.get());
    return code;
}

int bareListTwice(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream(fopen(request.localPath.c_str(), "w+"));
    setListing(handle, request, stream);
    const CURLcode first = curl_easy_perform(handle.get());
    return first != CURLE_OK ? first : curl_easy_perform(handle.get());
}
