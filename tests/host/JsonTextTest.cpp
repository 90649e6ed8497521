#include <JsonText.h>

#include <gtest/gtest.h>

using namespace std::string_literals;

TEST(JsonText, QuotesPlainText)
{
    EXPECT_EQ(jsonText(""), R"("")");
    EXPECT_EQ(jsonText("a/b {} %s \xc3\xbc\xf0\x9f\x98\x80"), "\"a/b {} %s \xc3\xbc\xf0\x9f\x98\x80\"");
}

TEST(JsonText, EscapesWhatJsonReserves) { EXPECT_EQ(jsonText(R"(a"b\c)"), R"("a\"b\\c")"); }

TEST(JsonText, EscapesControlCharacters)
{
    EXPECT_EQ(jsonText("\n\r\t\0\x01\x1b\x1f\x7f"s), R"("\n\r\t\u0000\u0001\u001b\u001f\u007f")");
    EXPECT_EQ(jsonText("\xc2\x80\xc2\x9f\xc2\xa0"), "\"\\u0080\\u009f\xc2\xa0\"");
}

TEST(JsonText, ReplacesEachByteThatIsNoUtf8)
{
    EXPECT_EQ(jsonText("a\xff\xc3"), "\"a\xef\xbf\xbd\xef\xbf\xbd\"");
    EXPECT_EQ(jsonText("\xed\xa0\x80."), "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd.\"");
}
