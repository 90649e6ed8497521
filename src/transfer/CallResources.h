#ifndef SFTPCLIENT_TRANSFER_CALLRESOURCES_H
#define SFTPCLIENT_TRANSFER_CALLRESOURCES_H

#include <SFtpRequest.h>

#include <curl/curl.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <tuple>

// What one call holds: libcurl's handle, the local file and the login are released on every way out; the list of
// commands is not, on purpose.

struct EasyHandleCleanup
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

/// A libcurl easy handle that lives for one call.
using EasyHandle = std::unique_ptr<CURL, EasyHandleCleanup>;

struct LocalStreamClose
{
    void operator()(FILE* stream) const { std::ignore = fclose(stream); }
};

/// A local file, open for one operation.
using LocalStream = std::unique_ptr<FILE, LocalStreamClose>;

/// Makes every write reach the file at once, so that a full disk shows while libcurl can still report it, not in the
/// closing that nobody checks.
inline void writeUnbuffered(const LocalStream& stream) { std::ignore = setvbuf(stream.get(), nullptr, _IONBF, 0); }

/// Overwrites every character of `text` with a zero byte, three times over, then empties it.
static inline void sftpWipeString(std::string& text)
{
    constexpr int kPasses = 3;
    // Volatile: the compiler may not drop stores to a string that nobody reads again.
    volatile char* const characters = text.data();
    for (int pass = 0; pass < kPasses; ++pass) {
        for (std::string::size_type i = 0; i < text.size(); ++i) {
            characters[i] = '\0';
        }
    }
    text.clear();
}

/// The credentials of one call as libcurl takes them, "user:password": the only copy of the password that the library
/// makes. It is wiped where an operation says so, and by the destructor when an exception passes.
class UserPwd
{
public:
    explicit UserPwd(const SFtpRequest& request)
    {
        // Room for all of it first: a text that grew would leave the password behind in the block it outgrew.
        m_text.reserve(request.userName.size() + 1 + request.password.size());
        m_text.append(request.userName).append(1, ':').append(request.password);
    }
    ~UserPwd() { wipe(); }
    UserPwd(const UserPwd&) = delete;
    UserPwd& operator=(const UserPwd&) = delete;

    const char* c_str() const { return m_text.c_str(); }
    bool empty() const { return m_text.empty(); }

    void wipe()
    {
        if (!m_text.empty()) {
            sftpWipeString(m_text);
        }
    }

private:
    std::string m_text;
};

/// The one-element list of commands that libcurl carries out after it has visited the URL. Nobody frees it: it is
/// left behind with each rename and delete.
/// Throws `std::bad_alloc` where libcurl makes no list: without its command a transfer would report a success that
/// changed nothing.
inline curl_slist* makePostTransferCommand(const std::string& command)
{
    curl_slist* commands = curl_slist_append(nullptr, command.c_str());
    if (commands == nullptr) {
        throw std::bad_alloc();
    }
    return commands;
}

#endif
