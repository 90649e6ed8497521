// Names: which are leftovers, which are excluded, which are plain.
#include <tree/Names.h>

#include <gtest/gtest.h>

TEST(TreeNames, ArePlainWithinTheirDirectory)
{
    for (const char* const name : {"a", "...", "..a", "a b", ".hidden", "\xff"}) {
        EXPECT_TRUE(isPlainName(name)) << name;
    }
    for (const std::string& name : {std::string(""), std::string("."), std::string(".."), std::string("a/b"),
                                    std::string("/"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isPlainName(name)) << name;
    }
}

TEST(TreeNames, OfLeftoversTellTheFile)
{
    const std::pair<const char*, const char*> kRows[] = {
        {".a.bak.0123456789ab.part", "a.bak"},   {".a.0123456789AB.old", "a"},          {".a.4711.0.part", "a"},
        {"..a.0123456789ab.part.1.2.part", "a"}, {".a b.c.ffffffffffff.part", "a b.c"},
    };
    for (const auto& [name, target] : kRows) {
        EXPECT_EQ(target, targetOfLeftover(name)) << name;
    }
    for (const char* const name :
         {"a.0123456789ab.part", ".a.0123456789a.part", ".a.0123456789xb.part", ".a.part", ".0123456789ab.part",
          ".a.0123456789ab.partx", ".a.1.2.old", ".a.x.2.part", ".part", ".", "part", ".a.0123456789abc.part"}) {
        EXPECT_EQ(std::nullopt, targetOfLeftover(name)) << name;
    }
    const std::string arriving = arrivingName(std::string(255, 'n'), "1");
    EXPECT_GE(220U, arriving.size());
    EXPECT_EQ(std::string(180, 'n'), targetOfLeftover(arriving));
    EXPECT_NE(arriving, arrivingName(std::string(255, 'n'), "2"));
    EXPECT_NE(arriving, arrivingName(std::string(254, 'n') + "m", "1"));
    EXPECT_EQ(arriving, arrivingName(std::string(255, 'n'), "1"));
}

TEST(TreeNames, AreExcludedByPatterns)
{
    const Exclusions exclusions({"*.tmp", "cache/", "/top", "docs/*.html", "a?c"});
    for (const char* const path : {"x.tmp", "d/e/x.tmp", "top", "docs/x.html", "abc", "d/abc"}) {
        EXPECT_TRUE(exclusions.cover(path, false)) << path;
    }
    EXPECT_TRUE(exclusions.cover("d/cache", true));
    for (const char* const path : {"x.tmpx", "d/cache", "d/top", "docs/d/x.html", "d/docs/x.html", "x.html"}) {
        EXPECT_FALSE(exclusions.cover(path, false)) << path;
    }
    EXPECT_FALSE(Exclusions({}).cover("a", false));
}
