// The scripted libcurl's multi interface, what sessions use beside it, and functions that are real but can fail.

#include "support/Journal.h"
#include "support/Memory.h"
#include "support/NextFunction.h"
#include "support/ScriptedCurl.h"

#include <sys/socket.h>

#include <cstdarg>
#include <fcntl.h>

// curl.h turns this into a macro of the same name, to check the number of arguments.
#undef curl_multi_setopt

namespace {

using scripted::curl;

// What stands behind a CURLM*: one transfer at a time.
struct Multi
{
    int number;
    scripted::Handle* added = nullptr;
    unsigned waits = 0;
    bool told = true;
    CURLMsg message = {};
    curl_socket_t socket = CURL_SOCKET_BAD;
    std::function<int(curl_socket_t)> close = {}; // what the handle's callback does that opened it
};

// False if the session gives no socket.
bool connects(Multi& multi)
{
    if (!curl().connects || multi.socket != CURL_SOCKET_BAD) {
        return true;
    }
    const memory::Pause pause;
    using Open = curl_socket_t (*)(void*, curlsocktype, curl_sockaddr*);
    using Close = int (*)(void*, curl_socket_t);
    const scripted::Handle& handle = *multi.added;
    const auto open = reinterpret_cast<Open>(handle.pointer(CURLOPT_OPENSOCKETFUNCTION));
    curl_sockaddr address = {};
    address.family = AF_INET;
    address.socktype = SOCK_STREAM;
    {
        const memory::Resumption session;
        multi.socket = open(handle.pointer(CURLOPT_OPENSOCKETDATA), CURLSOCKTYPE_IPCXN, &address);
    }
    const auto close = reinterpret_cast<Close>(handle.pointer(CURLOPT_CLOSESOCKETFUNCTION));
    multi.close = [close, data = handle.pointer(CURLOPT_CLOSESOCKETDATA)](curl_socket_t socket) {
        const memory::Resumption session;
        return close(data, socket);
    };
    return multi.socket != CURL_SOCKET_BAD;
}

Multi& multiOf(CURLM* multi) { return *static_cast<Multi*>(multi); }

void noteOf(const Multi& multi, const std::string& text)
{
    journal::note("multi " + std::to_string(multi.number) + " " + text);
}

} // namespace

// The types of these parameters are multi.h's, and clang would rather have others in front of "...".
#pragma GCC diagnostic ignored "-Wvarargs"

extern "C" CURLM* curl_multi_init()
{
    const bool starved = memory::unmet("curl_multi_init");
    const memory::Pause pause;
    if (starved || scripted::fails("curl_multi_init")) {
        return nullptr;
    }
    auto* const multi = new Multi{++curl().multisMade};
    noteOf(*multi, "made");
    return multi;
}

extern "C" CURLMcode curl_multi_setopt(CURLM* multi, CURLMoption option, ...)
{
    const memory::Pause pause;
    const std::string name =
        option == CURLMOPT_MAXCONNECTS ? "MAXCONNECTS" : "option " + std::to_string(static_cast<int>(option));
    if (scripted::fails("multi " + name)) {
        return CURLM_UNKNOWN_OPTION;
    }
    va_list arguments;
    va_start(arguments, option);
    noteOf(multiOf(multi), name + " = " + std::to_string(va_arg(arguments, long)));
    va_end(arguments);
    return CURLM_OK;
}

extern "C" CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    const bool starved = memory::unmet("curl_multi_add_handle");
    const memory::Pause pause;
    if (starved || scripted::fails("curl_multi_add_handle")) {
        return CURLM_OUT_OF_MEMORY;
    }
    Multi& kept = multiOf(multi);
    kept.added = static_cast<scripted::Handle*>(handle);
    kept.waits = curl().waits;
    noteOf(kept, "takes " + std::to_string(kept.added->number()));
    return CURLM_OK;
}

extern "C" CURLMcode curl_multi_remove_handle(CURLM* multi, CURL* handle)
{
    const memory::Pause pause;
    Multi& kept = multiOf(multi);
    EXPECT_EQ(kept.added, handle);
    kept.added = nullptr;
    noteOf(kept, "gives " + std::to_string(static_cast<scripted::Handle*>(handle)->number()) + " back");
    return scripted::fails("curl_multi_remove_handle") ? CURLM_INTERNAL_ERROR : CURLM_OK;
}

extern "C" CURLMcode curl_multi_perform(CURLM* multi, int* running)
{
    Multi& kept = multiOf(multi);
    {
        const memory::Pause pause;
        noteOf(kept, "perform");
        if (scripted::fails("curl_multi_perform")) {
            return CURLM_INTERNAL_ERROR;
        }
    }
    if (kept.waits > 0) {
        --kept.waits;
        *running = 1;
        return CURLM_OK;
    }
    const bool starved = memory::unmet("curl_multi_perform");
    const CURLcode code = starved           ? CURLE_OUT_OF_MEMORY
                          : !connects(kept) ? CURLE_COULDNT_CONNECT
                                            : curl().perform(*kept.added);
    kept.message = {CURLMSG_DONE, kept.added, {}};
    kept.message.data.result = code;
    kept.told = false;
    *running = 0;
    return CURLM_OK;
}

extern "C" CURLMcode curl_multi_poll(CURLM* multi, curl_waitfd* extra, unsigned count, int milliseconds, int* ready)
{
    const memory::Pause pause;
    noteOf(multiOf(multi), "waits " + std::to_string(milliseconds) + " ms with " + std::to_string(count) + " more");
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_NE(-1, fcntl(extra[i].fd, F_GETFD)) << "the further descriptor " << i << " is not open";
    }
    if (curl().onWait) {
        curl().onWait();
    }
    *ready = 0;
    return scripted::fails("curl_multi_poll") ? CURLM_INTERNAL_ERROR : CURLM_OK;
}

extern "C" CURLMsg* curl_multi_info_read(CURLM* multi, int* left)
{
    const memory::Pause pause;
    Multi& kept = multiOf(multi);
    *left = 0;
    if (kept.told || scripted::fails("curl_multi_info_read")) {
        return nullptr;
    }
    kept.told = true;
    noteOf(kept, "tells " + std::to_string(kept.message.data.result));
    return &kept.message;
}

extern "C" CURLMcode curl_multi_cleanup(CURLM* multi)
{
    const memory::Pause pause;
    noteOf(multiOf(multi), "cleaned up");
    EXPECT_EQ(nullptr, multiOf(multi).added);
    if (multiOf(multi).socket != CURL_SOCKET_BAD) {
        EXPECT_EQ(0, multiOf(multi).close(multiOf(multi).socket));
    }
    delete &multiOf(multi);
    return CURLM_OK;
}

extern "C" void curl_easy_reset(CURL* handle)
{
    const memory::Pause pause;
    auto& kept = *static_cast<scripted::Handle*>(handle);
    journal::note(std::to_string(kept.number()) + " reset");
    kept.reset();
}

extern "C" CURLU* curl_url()
{
    const bool starved = memory::unmet("curl_url");
    const memory::Pause pause;
    return starved || scripted::fails("curl_url") ? nullptr : nextFunction<CURLU*()>("curl_url")();
}

extern "C" CURLUcode curl_url_set(CURLU* url, CURLUPart part, const char* text, unsigned flags)
{
    const bool starved = memory::unmet("curl_url_set");
    const memory::Pause pause;
    return starved || scripted::fails("curl_url_set")
               ? CURLUE_OUT_OF_MEMORY
               : nextFunction<CURLUcode(CURLU*, CURLUPart, const char*, unsigned)>("curl_url_set")(url, part, text,
                                                                                                   flags);
}

// Whether its first parameter is const depends on libcurl's release.
extern "C" CURLUcode partOfUrl(const CURLU* url, CURLUPart part, char** text, unsigned flags) __asm__("curl_url_get");

extern "C" CURLUcode partOfUrl(const CURLU* url, CURLUPart part, char** text, unsigned flags)
{
    const bool starved = memory::unmet("curl_url_get");
    const memory::Pause pause;
    return starved || scripted::fails("curl_url_get")
               ? CURLUE_OUT_OF_MEMORY
               : nextFunction<CURLUcode(const CURLU*, CURLUPart, char**, unsigned)>("curl_url_get")(url, part, text,
                                                                                                    flags);
}

extern "C" char* curl_easy_unescape(CURL* handle, const char* text, int length, int* outLength)
{
    const bool starved = memory::unmet("curl_easy_unescape");
    const memory::Pause pause;
    return starved || scripted::fails("curl_easy_unescape")
               ? nullptr
               : nextFunction<char*(CURL*, const char*, int, int*)>("curl_easy_unescape")(handle, text, length,
                                                                                          outLength);
}
