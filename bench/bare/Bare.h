#ifndef BENCH_BARE_BARE_H
#define BENCH_BARE_BARE_H

#include <SFtpRequest.h>

#include <curl/curl.h>

#include <cstdio>
#include <memory>
#include <string>

/// What a plain program on libcurl's easy interface writes for the library's operations: the same options in the same
/// order, and nothing around them. It is what the library cannot be better than.

struct CleanUp
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(FILE* stream) const { static_cast<void>(fclose(stream)); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Handle = std::unique_ptr<CURL, CleanUp>;
using Stream = std::unique_ptr<FILE, CleanUp>;
using List = std::unique_ptr<curl_slist, CleanUp>;

template <typename Value>
void set(const Handle& handle, CURLoption option, Value value)
{
    curl_easy_setopt(handle.get(), option, value);
}

/// URL, port and login.
void aim(const Handle& handle, const SFtpRequest& request);

/// TLS on both connections, with the request's certificate as a further trust anchor.
void requireTls(const Handle& handle, const SFtpRequest& request);

/// CURLOPT_WRITEFUNCTION for a FILE.
size_t writeToFile(void* bytes, size_t size, size_t count, void* file);

int bareTest(const SFtpRequest& request);
int bareSizeCheck(const SFtpRequest& request);
int bareDownload(const SFtpRequest& request);
int bareUpload(const SFtpRequest& request);
int bareList(const SFtpRequest& request);
int bareRename(const SFtpRequest& request);
int bareDelete(const SFtpRequest& request);

/// The listing twice on one handle: the second one finds its connection there.
int bareListTwice(const SFtpRequest& request);

#endif
