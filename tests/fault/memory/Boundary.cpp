// The boundary between the library and libcurl: these functions wrap both sides', and tell the watch on which
// side the thread is.

#include "support/Memory.h"
#include "support/NextFunction.h"
#include "transfer/SftpWriteData.h"

#include <curl/curl.h>

#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

// The function that this program's function of the same name replaces.
template <typename Function>
Function* nextOf(Function* own)
{
    Dl_info info = {};
    dladdr(reinterpret_cast<const void*>(own), &info);
    return nextFunction<Function>(info.dli_sname);
}

} // namespace

extern "C" CURLcode curl_easy_perform(CURL* handle)
{
    static auto* const real = nextFunction<CURLcode(CURL*)>("curl_easy_perform");
    const memory::Place place(true);
    return real(handle);
}

// The library leaves the list behind intentionally. Keep it reachable for leak detection.
extern "C" curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    static auto* const real = nextFunction<curl_slist*(curl_slist*, const char*)>("curl_slist_append");
    static auto& lists = *new std::vector<curl_slist*>;
    curl_slist* made = real(list, text);
    if (made == nullptr) {
        return nullptr;
    }
    if (memory::watched()) {
        memory::leave(made->data);
        memory::leave(made);
    }
    const memory::Pause pause;
    lists.push_back(made);
    return made;
}

size_t sftp_write_data(void* buffer, size_t size, size_t count, void* stream)
{
    static auto* const real = nextOf(sftp_write_data);
    const memory::Place place(false);
    return real(buffer, size, count, stream);
}

// libcurl asks for a thread to look up even an address, where it found no memory to take it for what it is. What such a
// thread frees, the watch would not see: where memory runs short there is no thread either.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument)
{
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static auto* const real = nextFunction<Create>("pthread_create");
    return memory::watched() ? EAGAIN : real(thread, attributes, run, argument);
}

// libcurl 7.88.1 waits for the wrong descriptor while a data connection comes up, for up to a second, which would make
// minutes of the walks. Its waits of a second and less may end early; the longer ones are for a whole handshake.
extern "C" int poll(pollfd* descriptors, nfds_t count, int milliseconds)
{
    static auto* const real = nextFunction<int(pollfd*, nfds_t, int)>("poll");
    constexpr int kSecond = 1000;
    constexpr int kSlice = 2;
    const bool hasten = memory::watched() && milliseconds <= kSecond;
    return real(descriptors, count, hasten ? std::min(milliseconds, kSlice) : milliseconds);
}
