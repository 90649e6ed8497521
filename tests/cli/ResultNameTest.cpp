#include <output/ResultName.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

TEST(ResultName, MatchesLibcurl)
{
    EXPECT_EQ("CURLE_OK", nameOfResult(0));
    EXPECT_EQ("CURLE_LOGIN_DENIED", nameOfResult(67));
    EXPECT_EQ("LIBRARY_FAILURE", nameOfResult(-1));
    EXPECT_EQ("CURLE_200", nameOfResult(200));
}

// Every code that has a text has a name too.
TEST(ResultName, ExistsForEveryCodeInUse)
{
    constexpr int kLastOfLibcurl788 = 99;
    const std::string unused = curl_easy_strerror(static_cast<CURLcode>(20));
    for (int code = 0; code <= kLastOfLibcurl788; ++code) {
        // Of these libcurl 8.14 no longer has the texts.
        const bool inUse = curl_easy_strerror(static_cast<CURLcode>(code)) != unused || code == 34 || code == 41;
        EXPECT_EQ(inUse, nameOfResult(code) != "CURLE_" + std::to_string(code)) << code;
    }
}
