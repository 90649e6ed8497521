#include "support/ScriptedCurl.h"

#include "support/Journal.h"
#include "support/Memory.h"
#include "tls/TlsTrust.h"
#include "transfer/CurlSFtpResponse.h"
#include "transfer/SftpWriteData.h"

#include <cstdarg>
#include <memory>
#include <vector>

// curl.h turns these into macros of the same name, to check the number of arguments.
#undef curl_easy_setopt
#undef curl_easy_getinfo

namespace scripted {

void* Handle::pointer(CURLoption option) const
{
    const auto found = m_pointers.find(option);
    return found == m_pointers.end() ? nullptr : found->second;
}

size_t Handle::receive(std::string bytes) const
{
    const auto write = reinterpret_cast<size_t (*)(void*, size_t, size_t, void*)>(pointer(CURLOPT_WRITEFUNCTION));
    const memory::Resumption library;
    return write(bytes.data(), 1, bytes.size(), pointer(CURLOPT_WRITEDATA));
}

void Handle::set(CURLoption option, long value)
{
    m_on.erase(option);
    if (value == 1) {
        m_on.insert(option);
    }
}

void Handle::reset()
{
    m_pointers.clear();
    m_on.clear();
}

size_t Handle::hear(std::string line) const
{
    const auto header = reinterpret_cast<size_t (*)(void*, size_t, size_t, void*)>(pointer(CURLOPT_HEADERFUNCTION));
    const memory::Resumption library;
    return header(line.data(), 1, line.size(), pointer(CURLOPT_HEADERDATA));
}

size_t Handle::send(std::string& bytes, size_t most) const
{
    bytes.resize(most);
    const auto read = reinterpret_cast<size_t (*)(void*, size_t, size_t, void*)>(pointer(CURLOPT_READFUNCTION));
    const size_t given = [&] {
        const memory::Resumption library;
        return read(bytes.data(), 1, most, pointer(CURLOPT_READDATA));
    }();
    bytes.resize(given > most ? 0 : given);
    return given;
}

int Handle::loggedIn() const
{
    using Tell = int (*)(void*, char*, char*, int, int);
    const auto tell = reinterpret_cast<Tell>(pointer(CURLOPT_PREREQFUNCTION));
    std::string address = "127.0.0.1";
    const memory::Resumption library;
    return tell(pointer(CURLOPT_PREREQDATA), address.data(), address.data(), 21, 50000);
}

int Handle::progress(curl_off_t toReceive, curl_off_t received) const
{
    const auto tell = reinterpret_cast<int (*)(void*, curl_off_t, curl_off_t, curl_off_t, curl_off_t)>(
        pointer(CURLOPT_XFERINFOFUNCTION));
    const memory::Resumption library;
    return tell(pointer(CURLOPT_XFERINFODATA), toReceive, received, 0, 0);
}

void Handle::detail(const std::string& text) const
{
    const memory::Pause pause;
    text.copy(static_cast<char*>(pointer(CURLOPT_ERRORBUFFER)), CURL_ERROR_SIZE - 1);
}

Curl& curl()
{
    static Curl instance;
    return instance;
}

bool fails(const std::string& call)
{
    if (curl().failing == 0 || --curl().failing > 0) {
        return false;
    }
    curl().failed = call;
    journal::note(call + " fails");
    return true;
}

std::string text(int code) { return "libcurl's text for " + std::to_string(code); }

namespace {

Handle& handleOf(CURL* curl) { return *static_cast<Handle*>(curl); }

std::string nameOf(const void* pointer)
{
    const auto known = curl().names.find(pointer);
    return known == curl().names.end() ? (pointer == nullptr ? "null" : "unknown") : known->second;
}

std::string listOf(const curl_slist* list)
{
    std::string elements;
    for (; list != nullptr; list = list->next) {
        elements += std::string("[") + list->data + "]";
    }
    return elements;
}

std::string optionName(CURLoption option)
{
    // It has two names, and libcurl's release decides which one is preferred.
    if (option == CURLOPT_FTP_RESPONSE_TIMEOUT) {
        return "FTP_RESPONSE_TIMEOUT";
    }
    const curl_easyoption* known = curl_easy_option_by_id(option);
    return known != nullptr ? known->name : "option " + std::to_string(option);
}

std::string functionName(const void* function)
{
    if (function == reinterpret_cast<const void*>(&sftp_write_data)) {
        return "sftp_write_data";
    }
    if (function == reinterpret_cast<const void*>(&CurlSFtpResponse::GetDataCallback)) {
        return "GetDataCallback";
    }
    if (function == reinterpret_cast<const void*>(&sftp_sslCtx_function)) {
        return "sftp_sslCtx_function";
    }
    return "unknown function";
}

std::string pointerValue(CURLoption option, void* value)
{
    const curl_easyoption* known = curl_easy_option_by_id(option);
    if (value == nullptr) {
        return nameOf(value);
    }
    if (known != nullptr && known->type == CURLOT_STRING) {
        return static_cast<const char*>(value);
    }
    if (known != nullptr && known->type == CURLOT_BLOB) {
        const auto& blob = *static_cast<const curl_blob*>(value);
        return std::string(static_cast<const char*>(blob.data), blob.len) +
               (blob.flags == CURL_BLOB_NOCOPY ? " (not copied)" : "");
    }
    if (known != nullptr && known->type == CURLOT_SLIST) {
        return listOf(static_cast<const curl_slist*>(value));
    }
    return nameOf(value);
}

std::string takeValue(Handle& handle, CURLoption option, va_list& arguments)
{
    const int kind = option / 10000 * 10000;
    if (kind == CURLOPTTYPE_LONG) {
        const long value = va_arg(arguments, long);
        handle.set(option, value);
        return std::to_string(value);
    }
    if (kind == CURLOPTTYPE_OFF_T) {
        return std::to_string(va_arg(arguments, curl_off_t)) + " (64 bits)";
    }
    void* value = va_arg(arguments, void*);
    handle.set(option, value);
    if (option == CURLOPT_URL && value != nullptr) {
        curl().url = static_cast<const char*>(value);
        curl().urlAt = value;
    }
    return kind == CURLOPTTYPE_FUNCTIONPOINT ? functionName(value) : pointerValue(option, value);
}

} // namespace
} // namespace scripted

using namespace scripted;

// The types of these parameters are curl.h's, and clang would rather have others in front of "...".
#pragma GCC diagnostic ignored "-Wvarargs"

extern "C" CURL* curl_easy_init()
{
    const bool starved = memory::unmet("curl_easy_init");
    const memory::Pause pause;
    if (starved || !curl().handles || fails("curl_easy_init")) {
        journal::note("curl_easy_init gives nothing");
        return nullptr;
    }
    auto* handle = new Handle(++curl().made);
    journal::note("handle " + std::to_string(handle->number()) + " made");
    return handle;
}

extern "C" CURLcode curl_easy_setopt(CURL* curl, CURLoption option, ...)
{
    // libcurl copies strings, and nothing else.
    const curl_easyoption* known = curl_easy_option_by_id(option);
    if (known != nullptr && known->type == CURLOT_STRING && memory::unmet(known->name)) {
        const memory::Pause pause;
        journal::note(std::to_string(handleOf(curl).number()) + " " + known->name + " is not taken");
        return CURLE_OUT_OF_MEMORY;
    }
    const memory::Pause pause;
    if (fails(optionName(option))) {
        return CURLE_UNKNOWN_OPTION;
    }
    va_list arguments;
    va_start(arguments, option);
    const std::string value = takeValue(handleOf(curl), option, arguments);
    va_end(arguments);
    journal::note(std::to_string(handleOf(curl).number()) + " " + optionName(option) + " = " + value);
    return CURLE_OK;
}

extern "C" CURLcode curl_easy_perform(CURL* handle)
{
    const bool starved = memory::unmet("curl_easy_perform");
    {
        const memory::Pause pause;
        journal::note(std::to_string(handleOf(handle).number()) + " perform");
    }
    return starved ? CURLE_OUT_OF_MEMORY : curl().perform(handleOf(handle));
}

extern "C" CURLcode curl_easy_getinfo(CURL* handle, CURLINFO info, ...)
{
    const memory::Pause pause;
    const bool isSize = info == CURLINFO_CONTENT_LENGTH_DOWNLOAD_T;
    const bool isTime = info == CURLINFO_FILETIME_T;
    const std::string name = isSize ? "CONTENT_LENGTH_DOWNLOAD_T" : isTime ? "FILETIME_T" : std::to_string(info);
    journal::note(std::to_string(handleOf(handle).number()) + " getinfo " + name);
    if (fails("getinfo " + name)) {
        return CURLE_UNKNOWN_OPTION;
    }
    if ((isSize || isTime) && curl().getinfo == CURLE_OK && curl().tellsSize) {
        va_list arguments;
        va_start(arguments, info);
        *va_arg(arguments, curl_off_t*) = isSize ? curl().size : curl().time;
        va_end(arguments);
    }
    return curl().getinfo;
}

extern "C" const char* curl_easy_strerror(CURLcode code)
{
    const memory::Pause pause;
    static std::map<int, std::string> texts;
    curl().asked.push_back(code);
    if (curl().emptyTexts) {
        return "";
    }
    return curl().texts ? texts.try_emplace(code, text(code)).first->second.c_str() : nullptr;
}

extern "C" void curl_easy_cleanup(CURL* handle)
{
    const memory::Pause pause;
    journal::note("handle " + std::to_string(handleOf(handle).number()) + " cleaned up");
    delete &handleOf(handle);
}

extern "C" curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    const bool starved = memory::unmet("curl_slist_append");
    const memory::Pause pause;
    journal::note(std::string("list of ") + (list == nullptr ? "its own" : "another") + ": " + text);
    if (starved || !curl().lists || fails("curl_slist_append")) {
        return nullptr;
    }
    // The library never frees its lists, so this harness keeps them.
    static std::vector<std::unique_ptr<std::string>> elements;
    static std::vector<std::unique_ptr<curl_slist>> lists;
    elements.push_back(std::make_unique<std::string>(text));
    lists.push_back(std::make_unique<curl_slist>(curl_slist{elements.back()->data(), nullptr}));
    if (list == nullptr) {
        return lists.back().get();
    }
    curl_slist* last = list;
    while (last->next != nullptr) {
        last = last->next;
    }
    last->next = lists.back().get();
    return list;
}

extern "C" void curl_slist_free_all(curl_slist* /*list*/)
{
    const memory::Pause pause;
    journal::note("list freed");
}
