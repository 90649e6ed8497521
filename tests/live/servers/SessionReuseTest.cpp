#include "RealServer.h"

#include <curl/curl.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

// Whether a daemon is as strict about the TLS sessions of data connections as its configuration asks shows only with a
// client that forgets its sessions; the library never does.
class SessionReuse : public RealServer
{
protected:
    CURLcode list(bool remembersSessions)
    {
        keep("listed/a.bak", "a");
        aimAt("listed/");
        const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
        curl_easy_setopt(handle.get(), CURLOPT_URL, request.remotePath.c_str());
        curl_easy_setopt(handle.get(), CURLOPT_USERNAME, request.userName.c_str());
        curl_easy_setopt(handle.get(), CURLOPT_PASSWORD, request.password.c_str());
        curl_easy_setopt(handle.get(), CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
        curl_easy_setopt(handle.get(), CURLOPT_SSL_SESSIONID_CACHE, remembersSessions ? 1L : 0L);
        return curl_easy_perform(handle.get());
    }
};

std::vector<Server> thoseWithTls()
{
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [](const Server& each) { return each.dataTls != DataTls::None; });
    return those;
}

TEST_P(SessionReuse, IsRequiredAsConfigured)
{
    EXPECT_EQ(CURLE_OK, list(true));
    EXPECT_EQ(server.dataTls == DataTls::SameSession, list(false) != CURLE_OK);
}

INSTANTIATE_TEST_SUITE_P(OfDebian, SessionReuse, testing::ValuesIn(thoseWithTls()), idOf);

} // namespace
