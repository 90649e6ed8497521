// Keeps reachable the command list that each rename and delete intentionally leaves behind, so that leak detection
// reports only other leaks. Linked into a program, it replaces libcurl's function.

#include "NextFunction.h"

#include <curl/curl.h>

#include <mutex>
#include <vector>

extern "C" __attribute__((visibility("default"))) curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    static auto* const next = nextFunction<curl_slist*(curl_slist*, const char*)>("curl_slist_append");
    static std::mutex mutex;
    static auto& lists = *new std::vector<curl_slist*>;
    curl_slist* made = next(list, text);
    const std::lock_guard<std::mutex> lock(mutex);
    lists.push_back(made);
    return made;
}
