#include <usage/Suggest.h>

#include <gtest/gtest.h>

TEST(Suggest, NamesTheClosest)
{
    const std::vector<std::string> known{"--port", "--user", "--quiet", "ls", "mv", "put"};
    EXPECT_EQ("; did you mean --port?", suggestionFor("--prot", known));
    EXPECT_EQ("; did you mean --port?", suggestionFor("--por", known));
    EXPECT_EQ("; did you mean --port?", suggestionFor("--ports", known));
    EXPECT_EQ("; did you mean --quiet?", suggestionFor("--qiuet", known));
    EXPECT_EQ("; did you mean --quiet?", suggestionFor("--quite", known));
    EXPECT_EQ("; did you mean ls?", suggestionFor("sl", known));
    EXPECT_EQ("; did you mean mv?", suggestionFor("mb", known));
}

TEST(Suggest, NamesEveryMatchOfAPrefix)
{
    EXPECT_EQ("; did you mean --password-file or --password-stdin?",
              suggestionFor("--pass", {"--password-file", "--password-stdin", "--port"}));
}

TEST(Suggest, SuggestsNothingIfNothingIsClose)
{
    EXPECT_EQ(".", suggestionFor("frob", {"get", "put", "rm"}));
    EXPECT_EQ(".", suggestionFor("--", {"--port"}));
    EXPECT_EQ(".", suggestionFor("", {"get"}));
}
