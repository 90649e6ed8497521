#include <output/ResultName.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

TEST(ResultName, IsLibcurls)
{
    EXPECT_EQ(nameOfResult(0), "CURLE_OK");
    EXPECT_EQ(nameOfResult(67), "CURLE_LOGIN_DENIED");
    EXPECT_EQ(nameOfResult(-1), "LIBRARY_FAILURE");
    EXPECT_EQ(nameOfResult(200), "CURLE_200");
}

// What libcurl has a text for, it has a name for as well.
TEST(ResultName, IsThereForEveryCodeInUse)
{
    constexpr int kLastOfLibcurl788 = 99;
    const std::string unused = curl_easy_strerror(static_cast<CURLcode>(20));
    for (int code = 0; code <= kLastOfLibcurl788; ++code) {
        const bool inUse = curl_easy_strerror(static_cast<CURLcode>(code)) != unused;
        EXPECT_EQ(nameOfResult(code) != "CURLE_" + std::to_string(code), inUse) << code;
    }
}
