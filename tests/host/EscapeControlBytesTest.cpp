#include <EscapeControlBytes.h>

#include <gtest/gtest.h>

using namespace std::string_literals;

TEST(EscapeControlBytes, LeavesPlainTextAlone)
{
    EXPECT_EQ("", escapeControlBytes(""));
    EXPECT_EQ(" a-Z~%s {} \"quoted\"", escapeControlBytes(" a-Z~%s {} \"quoted\""));
}

TEST(EscapeControlBytes, UsesShortEscapesForTheCommonOnes)
{
    EXPECT_EQ(R"(a\nb\rc\td)", escapeControlBytes("a\nb\rc\td"));
}

TEST(EscapeControlBytes, WritesTheOthersInHex)
{
    EXPECT_EQ(R"(\x00\x01\x1b[2J\x1f\x7f)", escapeControlBytes("\0\x01\x1b[2J\x1f\x7f"s));
}

TEST(EscapeControlBytes, EscapesItsOwnEscapeCharacter) { EXPECT_EQ(R"(a\\nb)", escapeControlBytes(R"(a\nb)")); }

TEST(EscapeControlBytes, KeepsUtf8ExceptControlCharacters)
{
    EXPECT_EQ("\xc3\xbc \xc3\x9b \xc2\xa0 \xe2\x82\xac \xf0\x9f\x98\x80",
              escapeControlBytes("\xc3\xbc \xc3\x9b \xc2\xa0 \xe2\x82\xac \xf0\x9f\x98\x80"));
    EXPECT_EQ(R"(\xc2\x80 \xc2\x9b2J \xc2\x9f)", escapeControlBytes("\xc2\x80 \xc2\x9b"
                                                                    "2J \xc2\x9f"));
}

TEST(EscapeControlBytes, WritesInvalidUtf8InHex)
{
    EXPECT_EQ(R"(end \xc2)", escapeControlBytes("end \xc2"));
    EXPECT_EQ(R"(\x9b2J gr\xfc\xdfe)", escapeControlBytes("\x9b"
                                                          "2J gr\xfc\xdf"
                                                          "e"));
}
