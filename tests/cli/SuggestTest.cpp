#include <usage/Suggest.h>

#include <gtest/gtest.h>

TEST(Suggest, NamesTheNearest)
{
    const std::vector<std::string> known{"--port", "--user", "--quiet", "ls", "mv", "put"};
    EXPECT_EQ(suggestionFor("--prot", known), "; did you mean --port?");
    EXPECT_EQ(suggestionFor("--por", known), "; did you mean --port?");
    EXPECT_EQ(suggestionFor("--ports", known), "; did you mean --port?");
    EXPECT_EQ(suggestionFor("--qiuet", known), "; did you mean --quiet?");
    EXPECT_EQ(suggestionFor("--quite", known), "; did you mean --quiet?");
    EXPECT_EQ(suggestionFor("sl", known), "; did you mean ls?");
    EXPECT_EQ(suggestionFor("mb", known), "; did you mean mv?");
}

TEST(Suggest, NamesAllThatBeginSo)
{
    EXPECT_EQ(suggestionFor("--pass", {"--password-file", "--password-stdin", "--port"}),
              "; did you mean --password-file or --password-stdin?");
}

TEST(Suggest, IsSilentWhereNothingIsNear)
{
    EXPECT_EQ(suggestionFor("frob", {"get", "put", "rm"}), ".");
    EXPECT_EQ(suggestionFor("--", {"--port"}), ".");
    EXPECT_EQ(suggestionFor("", {"get"}), ".");
}
