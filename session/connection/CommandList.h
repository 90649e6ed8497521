#ifndef SFTPCLIENT_SESSION_COMMANDLIST_H
#define SFTPCLIENT_SESSION_COMMANDLIST_H

#include <curl/curl.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace session {

using CommandList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

/// The same commands for libcurl.
inline CommandList listOf(const std::vector<std::string>& commands)
{
    CommandList list(nullptr, curl_slist_free_all);
    for (const std::string& command : commands) {
        curl_slist* const longer = curl_slist_append(list.get(), command.c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

} // namespace session

#endif
