// libcurl's easy interface, or what it would be without its wait: libcurl 7.88 does not watch the control connection
// while it sets a data connection up, and waits for 0.2 s or not at all, as chance has it. Where that would hide what
// is compared, BENCH_POLLED in the environment has transfers driven by the multi interface, which is asked to go on
// every millisecond. In the program, this stands before libcurl's function for the library too.

#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdlib>
#include <memory>

namespace {

struct MultiCleanUp
{
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

CURLcode performPolled(CURL* handle)
{
    constexpr int kMilliseconds = 1;
    const std::unique_ptr<CURLM, MultiCleanUp> multi(curl_multi_init());
    curl_multi_add_handle(multi.get(), handle);
    int running = 1;
    while (curl_multi_perform(multi.get(), &running) == CURLM_OK && running != 0) {
        curl_multi_poll(multi.get(), nullptr, 0, kMilliseconds, nullptr);
    }
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi.get(), &left);
    const CURLcode result = message == nullptr ? CURLE_FAILED_INIT : message->data.result;
    curl_multi_remove_handle(multi.get(), handle);
    return result;
}

} // namespace

extern "C" __attribute__((visibility("default"))) CURLcode curl_easy_perform(CURL* handle)
{
    static auto* const perform = reinterpret_cast<CURLcode (*)(CURL*)>(dlsym(RTLD_NEXT, "curl_easy_perform"));
    static const bool polled = std::getenv("BENCH_POLLED") != nullptr;
    return polled ? performPolled(handle) : perform(handle);
}
