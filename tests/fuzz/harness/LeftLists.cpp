// The program's own curl_slist_append(), which replaces libcurl's for the library.
#include "harness/LeftLists.h"

#include "support/NextFunction.h"

#include <curl/curl.h>

namespace {

thread_local LeftLists* current = nullptr;

} // namespace

LeftLists::LeftLists() { current = this; }

LeftLists::~LeftLists()
{
    current = nullptr;
    for (curl_slist* const each : m_lists) {
        curl_slist_free_all(each);
    }
}

extern "C" __attribute__((visibility("default"))) curl_slist* curl_slist_append(curl_slist* list, const char* text)
{
    static auto* const next = nextFunction<curl_slist*(curl_slist*, const char*)>("curl_slist_append");
    curl_slist* const longer = next(list, text);
    if (current != nullptr && list == nullptr && longer != nullptr) {
        current->add(longer);
    }
    return longer;
}
