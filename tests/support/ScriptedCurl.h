#ifndef SUPPORT_SCRIPTEDCURL_H
#define SUPPORT_SCRIPTEDCURL_H

#include <curl/curl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// A libcurl that does what the test says and notes what it was told. This program defines `curl_easy_init` and its
/// like, so the library calls these.
namespace scripted {

/// What stands behind a CURL*.
class Handle
{
public:
    explicit Handle(int number) : m_number(number) {}
    int number() const { return m_number; }

    /// The pointer last set for an option, or null.
    void* pointer(CURLoption option) const;
    void set(CURLoption option, void* value) { m_pointers[option] = value; }

    /// Calls the write callback with the bytes, as libcurl does for received data; what the callback returned.
    size_t receive(std::string bytes) const;

private:
    int m_number;
    std::map<CURLoption, void*> m_pointers;
};

/// How libcurl behaves in this test. Tests change it; the harness sets it back.
struct Curl
{
    bool handles = true;     ///< whether curl_easy_init gives handles
    bool lists = true;       ///< whether curl_slist_append makes lists
    bool texts = true;       ///< whether curl_easy_strerror knows texts
    bool emptyTexts = false; ///< whether the texts that it knows are empty
    std::function<CURLcode(Handle&)> perform = [](Handle&) { return CURLE_OK; };
    CURLcode getinfo = CURLE_OK;
    bool tellsSize = true;                    ///< whether a successful curl_easy_getinfo writes
    curl_off_t size = 0;                      ///< what CURLINFO_CONTENT_LENGTH_DOWNLOAD_T tells
    std::map<const void*, std::string> names; ///< what the journal calls a pointer
    int made = 0;
    std::vector<int> asked; ///< the codes that curl_easy_strerror was asked for
    std::string url;        ///< the bytes of the last CURLOPT_URL, and where they stood
    const void* urlAt = nullptr;
};

Curl& curl();

/// The text that curl_easy_strerror gives for a code.
std::string text(int code);

} // namespace scripted

#endif
