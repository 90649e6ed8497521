#include "doctor/NameList.h"

#include <gtest/gtest.h>

#include <string>

namespace {

doctor::NameList listOf(const std::string& bytes)
{
    doctor::NameList list;
    list.append(bytes.data(), bytes.size());
    return list;
}

TEST(NameList, FindsAFileByItsName)
{
    const doctor::NameList list = listOf("one\r\n./sub/two\nthree");
    EXPECT_TRUE(list.holds("one"));
    EXPECT_TRUE(list.holds("two"));
    EXPECT_TRUE(list.holds("three"));
    EXPECT_FALSE(list.holds("thre"));
    EXPECT_FALSE(list.holds("sub"));
}

TEST(NameList, CountsLines)
{
    EXPECT_EQ(0U, listOf("").lines());
    EXPECT_EQ(1U, listOf("one").lines());
    EXPECT_EQ(2U, listOf("one\r\ntwo\r\n").lines());
}

TEST(NameList, KeepsOneMebibyteAndReportsWhatItOmits)
{
    constexpr std::size_t kMebibyte = std::size_t{1} << 20;
    doctor::NameList list = listOf(std::string(kMebibyte - 4, '\n'));
    list.append("last", 4);
    EXPECT_FALSE(list.isCut());
    EXPECT_TRUE(list.holds("last"));
    list.append("\nmore", 5);
    EXPECT_TRUE(list.isCut());
    EXPECT_TRUE(list.holds("last"));
    EXPECT_FALSE(list.holds("more"));
    EXPECT_EQ(kMebibyte - 3, list.lines());
}

} // namespace
