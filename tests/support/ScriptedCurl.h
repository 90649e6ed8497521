#ifndef SUPPORT_SCRIPTEDCURL_H
#define SUPPORT_SCRIPTEDCURL_H

#include <curl/curl.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

/// A libcurl that does what the test says and notes every call. This program defines `curl_easy_init` and
/// the like, so the library calls these.
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

    /// Whether an option of type long was set to 1.
    bool isOn(CURLoption option) const { return m_on.count(option) != 0; }
    void set(CURLoption option, long value);

    /// As new.
    void reset();

    // Each calls one of the callbacks that were set, as libcurl does, and returns its result:
    /// for received data,
    size_t receive(std::string bytes) const;
    /// for a line that the server sends,
    size_t hear(std::string line) const;
    /// for so many bytes to send, which come back in `bytes`,
    size_t send(std::string& bytes, size_t most) const;
    /// for the end of the login,
    int loggedIn() const;
    /// for what has moved.
    int progress(curl_off_t toReceive, curl_off_t received) const;

    /// The error buffer's content afterwards.
    void detail(const std::string& text) const;

private:
    int m_number;
    std::map<CURLoption, void*> m_pointers;
    std::set<CURLoption> m_on;
};

/// How libcurl behaves in this test. Tests change it; the harness sets it back.
struct Curl
{
    bool handles = true;     ///< whether curl_easy_init gives handles
    bool lists = true;       ///< whether curl_slist_append makes lists
    bool texts = true;       ///< whether curl_easy_strerror knows texts
    bool emptyTexts = false; ///< whether the texts that it knows are empty
    std::function<CURLcode(Handle&)> perform = [](Handle&) { return CURLE_OK; };
    unsigned waits = 0;           ///< how often a transfer of the multi interface waits first
    bool connects = false;        ///< whether it has a socket opened, and closed in the end
    std::function<void()> onWait; ///< called each time
    CURLcode getinfo = CURLE_OK;
    bool tellsSize = true;                    ///< whether a successful curl_easy_getinfo writes
    curl_off_t size = 0;                      ///< what CURLINFO_CONTENT_LENGTH_DOWNLOAD_T returns
    curl_off_t time = -1;                     ///< what CURLINFO_FILETIME_T returns
    std::map<const void*, std::string> names; ///< what the journal calls a pointer
    int made = 0;
    int multisMade = 0;
    unsigned failing = 0;   ///< which call from now on fails, once, of those that can; 1 is the next one, 0 none
    std::string failed;     ///< the function that failed
    std::vector<int> asked; ///< the codes that curl_easy_strerror was asked for
    std::string url;        ///< the bytes of the last CURLOPT_URL, and where they stood
    const void* urlAt = nullptr;
};

Curl& curl();

/// For libcurl's functions that can fail: true if this call is to.
bool fails(const std::string& call);

/// The text that curl_easy_strerror gives for a code.
std::string text(int code);

} // namespace scripted

#endif
