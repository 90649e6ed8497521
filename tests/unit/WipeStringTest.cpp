#include "transfer/CallResources.h"

#include "SingleStep.h"

#include <gtest/gtest.h>

namespace {

TEST(WipeString, LeavesAnEmptyTextEmpty)
{
    std::string text;
    sftpWipeString(text);
    EXPECT_EQ("", text);
}

TEST(WipeString, ZeroesAndEmpties)
{
    std::string text = "abc";
    const char* const characters = text.data();
    sftpWipeString(text);
    EXPECT_EQ(0U, text.size());
    EXPECT_EQ(std::string(4, '\0'), std::string(characters, 4));
}

TEST(WipeString, OverwritesTheWholeTextThreeTimes)
{
    std::string text = "a password of 24 letters";
    ASSERT_EQ(24U, text.size());
    const Overwriting seen = watchOverwriting(text, [](std::string& secret) { sftpWipeString(secret); });
    ASSERT_EQ("", seen.obstacle);
    EXPECT_EQ(3U, seen.passes);
    EXPECT_TRUE(seen.fromFirstToLast);
}

} // namespace
