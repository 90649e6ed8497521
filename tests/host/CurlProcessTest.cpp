#include "support/Thrown.h"

#include <CurlProcess.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <memory>

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

// In libcurl's place, which counts these calls but does not report the number.
CURLcode curl_global_init(long flags)
{
    EXPECT_EQ(CURL_GLOBAL_DEFAULT, flags);
    ++initialised;
    return answer;
}

void curl_global_cleanup() { ++cleanedUp; }

namespace {

TEST_F(CurlProcessTest, InitialisesAndCleansUp)
{
    auto process = std::make_unique<CurlProcess>();
    EXPECT_EQ(1, initialised);
    EXPECT_EQ(0, cleanedUp);
    process.reset();
    EXPECT_EQ(1, cleanedUp);
}

TEST_F(CurlProcessTest, IsCountedByLibcurl)
{
    auto first = std::make_unique<CurlProcess>();
    auto second = std::make_unique<CurlProcess>();
    first.reset();
    EXPECT_EQ(2, initialised);
    EXPECT_EQ(1, cleanedUp);
    second.reset();
    EXPECT_EQ(2, cleanedUp);
}

TEST_F(CurlProcessTest, LeavesNothingToCleanUpWhenItFails)
{
    answer = CURLE_OUT_OF_MEMORY;
    EXPECT_EQ("libcurl cannot be initialised: Out of memory", thrownBy([] { const CurlProcess process; }));
    EXPECT_EQ(1, initialised);
    EXPECT_EQ(0, cleanedUp);
}

} // namespace
