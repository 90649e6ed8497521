#include "support/Lines.h"

#include "support/Codes.h"

#include <curl/curl.h>

namespace {

Lines numbered(int from, int to)
{
    Lines lines;
    for (int number = from; number <= to; ++number) {
        lines.push_back("line " + std::to_string(number));
    }
    return lines;
}

std::string differenceOf(const Lines& expected, const Lines& actual)
{
    const testing::AssertionResult result = sameLines(expected, actual);
    EXPECT_EQ(expected == actual, static_cast<bool>(result));
    return result.message();
}

TEST(SameLines, ShowsThreeLinesAroundADifference)
{
    EXPECT_EQ("expected (-), actual (+):\n"
              "    ...\n"
              "    \"line 7\"\n"
              "    \"line 8\"\n"
              "    \"line 9\"\n"
              "  - \"line 10\"\n"
              "  + \"another\"\n"
              "    \"line 11\"\n"
              "    \"line 12\"\n"
              "    \"line 13\"\n"
              "    ...\n",
              differenceOf(numbered(1, 20), numbered(1, 9) + Lines{"another"} + numbered(11, 20)));
}

TEST(SameLines, ShowsWhereLinesAreMissing)
{
    EXPECT_EQ("expected (-), actual (+):\n  - \"line 1\"\n    \"line 2\"\n    \"line 3\"\n  - \"line 4\"\n",
              differenceOf(numbered(1, 4), numbered(2, 3)));
}

TEST(SameLines, ShowsExtraLines)
{
    EXPECT_EQ("expected (-), actual (+):\n  + \"line 1\"\n    \"line 2\"\n  + \"line 3\"\n",
              differenceOf(numbered(2, 2), numbered(1, 3)));
    EXPECT_EQ("expected (-), actual (+):\n  + \"\"\n", differenceOf({}, {""}));
}

TEST(SameLines, ShowsBlanksAndControlBytes)
{
    EXPECT_EQ("expected (-), actual (+):\n  - \"a \\r\"\n  + \"a\"\n", differenceOf({"a \r"}, {"a"}));
}

TEST(SameLines, AcceptsEqualLines)
{
    EXPECT_EQ("the same 0 lines", differenceOf({}, {}));
    EXPECT_EQ("the same 3 lines", differenceOf(numbered(1, 3), numbered(1, 3)));
}

TEST(SameText, ComparesEveryByte)
{
    EXPECT_TRUE(sameText("a\nb\n", "a\nb\n"));
    EXPECT_STREQ("expected (-), actual (+):\n    \"a\"\n  - \"b\"\n  - \"\"\n  + \"c\"\n",
                 sameText("a\nb\n", "a\nc").message());
    EXPECT_FALSE(sameText("a\n", "a"));
}

TEST(LinesOf, DropsLineEnds)
{
    EXPECT_EQ((Lines{"a", "", "b"}), linesOf("a\n\nb\n"));
    EXPECT_EQ((Lines{"a", "b"}), linesOf("a\nb"));
    EXPECT_EQ(Lines(), linesOf(""));
    EXPECT_EQ("b", lastLine("a\nb\n"));
    EXPECT_EQ("", lastLine(""));
}

TEST(Holds, MatchesPartsOfLines)
{
    EXPECT_STREQ("\"a\" is in:\n    \"bab\"\n", holds("a", "bab\n").message());
    EXPECT_TRUE(holds("b\na", "ab\nab\n"));
    EXPECT_FALSE(holds("aa", "aba"));
    EXPECT_STREQ("\"c\" is missing from:\n    \"a\"\n    \"b\"\n", holds("c", "a\nb\n").message());
}

TEST(HasLine, MatchesWholeLines)
{
    EXPECT_TRUE(hasLine("line 2", numbered(1, 3)));
    EXPECT_EQ("\"line\" is missing from:\n    \"line 1\"\n    \"line 2\"\n",
              std::string(hasLine("line", numbered(1, 2)).message()));
}

TEST(LastOf, ReturnsAllIfThereAreFewer)
{
    EXPECT_TRUE(sameLines(numbered(2, 3), lastOf(numbered(1, 3), 2)));
    EXPECT_TRUE(sameLines(numbered(1, 3), lastOf(numbered(1, 3), 4)));
}

TEST(Codes, HaveUniqueNames)
{
    EXPECT_EQ("CURLE_LOGIN_DENIED", nameOf(CURLE_LOGIN_DENIED));
    EXPECT_NE(nameOf(-1), nameOf(CURLE_OK));
    EXPECT_NE(nameOf(1000), nameOf(1001));
}

} // namespace
