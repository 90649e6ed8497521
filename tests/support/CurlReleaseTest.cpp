#include <gtest/gtest.h>

#include <curl/curl.h>

#include <cstdlib>

namespace {

// Otherwise a run with another libcurl could show nothing about it.
TEST(CurlRelease, IsTheOneThatWasAskedForOrBuiltWith)
{
    const char* const asked = std::getenv("SFTPCLIENT_LIBCURL");
    EXPECT_STREQ(asked != nullptr ? asked : LIBCURL_VERSION, curl_version_info(CURLVERSION_NOW)->version);
}

} // namespace
