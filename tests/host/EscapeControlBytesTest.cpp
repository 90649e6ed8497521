#include <EscapeControlBytes.h>

#include <gtest/gtest.h>

using namespace std::string_literals;

TEST(EscapeControlBytes, LeavesPlainTextAlone)
{
    EXPECT_EQ(escapeControlBytes(""), "");
    EXPECT_EQ(escapeControlBytes(" a-Z~%s {} \"quoted\""), " a-Z~%s {} \"quoted\"");
}

TEST(EscapeControlBytes, NamesTheUsualOnes) { EXPECT_EQ(escapeControlBytes("a\nb\rc\td"), R"(a\nb\rc\td)"); }

TEST(EscapeControlBytes, WritesTheOthersInHex)
{
    EXPECT_EQ(escapeControlBytes("\0\x01\x1b[2J\x1f\x7f"s), R"(\x00\x01\x1b[2J\x1f\x7f)");
}

TEST(EscapeControlBytes, KeepsItsOwnMarkApart) { EXPECT_EQ(escapeControlBytes(R"(a\nb)"), R"(a\\nb)"); }

TEST(EscapeControlBytes, KeepsUtf8ButForItsControls)
{
    EXPECT_EQ(escapeControlBytes("\xc3\xbc \xc3\x9b \xc2\xa0 \xe2\x82\xac \xf0\x9f\x98\x80"),
              "\xc3\xbc \xc3\x9b \xc2\xa0 \xe2\x82\xac \xf0\x9f\x98\x80");
    EXPECT_EQ(escapeControlBytes("\xc2\x80 \xc2\x9b"
                                 "2J \xc2\x9f"),
              R"(\xc2\x80 \xc2\x9b2J \xc2\x9f)");
}

TEST(EscapeControlBytes, WritesWhatIsNoUtf8InHex)
{
    EXPECT_EQ(escapeControlBytes("end \xc2"), R"(end \xc2)");
    EXPECT_EQ(escapeControlBytes("\x9b"
                                 "2J gr\xfc\xdf"
                                 "e"),
              R"(\x9b2J gr\xfc\xdfe)");
}
