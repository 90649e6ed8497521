#include <CurlProcess.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace {

int initialised = 0;
int cleanedUp = 0;
CURLcode answer = CURLE_OK;

class CurlProcessTest : public testing::Test
{
protected:
    CurlProcessTest()
    {
        initialised = 0;
        cleanedUp = 0;
        answer = CURLE_OK;
    }
};

} // namespace

// In libcurl's place: it counts these calls, and tells nobody the number.
CURLcode curl_global_init(long flags)
{
    EXPECT_EQ(flags, CURL_GLOBAL_DEFAULT);
    ++initialised;
    return answer;
}

void curl_global_cleanup() { ++cleanedUp; }

namespace {

TEST_F(CurlProcessTest, InitialisesAndCleansUp)
{
    auto process = std::make_unique<CurlProcess>();
    EXPECT_EQ(initialised, 1);
    EXPECT_EQ(cleanedUp, 0);
    process.reset();
    EXPECT_EQ(cleanedUp, 1);
}

TEST_F(CurlProcessTest, IsCountedByLibcurl)
{
    auto first = std::make_unique<CurlProcess>();
    auto second = std::make_unique<CurlProcess>();
    first.reset();
    EXPECT_EQ(initialised, 2);
    EXPECT_EQ(cleanedUp, 1);
    second.reset();
    EXPECT_EQ(cleanedUp, 2);
}

TEST_F(CurlProcessTest, LeavesNothingToCleanUpWhenItFails)
{
    answer = CURLE_OUT_OF_MEMORY;
    try {
        const CurlProcess process;
        FAIL() << "libcurl was not initialised";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "libcurl cannot be initialised: Out of memory");
    }
    EXPECT_EQ(initialised, 1);
    EXPECT_EQ(cleanedUp, 0);
}

} // namespace
