#include <JsonText.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

using namespace std::string_literals;

TEST(JsonText, QuotesPlainText)
{
    EXPECT_EQ(R"("")", jsonText(""));
    EXPECT_EQ(R"("a/b {} %s")", jsonText("a/b {} %s"));
}

TEST(JsonText, EscapesWhatJsonReserves) { EXPECT_EQ(R"("a\"b\\c")", jsonText(R"(a"b\c)")); }

TEST(JsonText, EscapesControlCharacters)
{
    EXPECT_EQ(R"("\n\r\t\u0000\u0001\u001b\u001f\u007f")", jsonText("\n\r\t\0\x01\x1b\x1f\x7f"s));
    EXPECT_EQ(R"("\u0080\u009f")", jsonText("\xc2\x80\xc2\x9f"));
}

TEST(JsonText, WritesNonAsciiAsNumericEscapes)
{
    EXPECT_EQ(R"("\u00fc\u20ac\ud83d\ude00")", jsonText("\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80"));
}

TEST(JsonText, ReplacesInvalidUtf8)
{
    EXPECT_EQ(R"("a\ufffd\ufffd")", jsonText("a\xff\xc3"));
    EXPECT_EQ(R"("\ufffd\ufffd\ufffd.")", jsonText("\xed\xa0\x80."));
}

TEST(JsonText, IsPrintableAsciiWhateverTheBytes)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string json = jsonText(std::string{static_cast<char>(first), static_cast<char>(second)});
            for (const char byte : json) {
                ASSERT_TRUE(byte >= 0x20 && byte < 0x7f) << first << " " << second << ": " << json;
            }
            ASSERT_TRUE(nlohmann::json::accept(json)) << json;
        }
    }
}

TEST(JsonText, KeepsTheOrderAndIndentsOnRequest)
{
    const nlohmann::ordered_json object = {{"b", 18446744073709551615U}, {"a", {"x"}}};
    EXPECT_EQ(R"({"b":18446744073709551615,"a":["x"]})", jsonText(object));
    EXPECT_EQ("{\n  \"b\": 18446744073709551615,\n  \"a\": [\n    \"x\"\n  ]\n}", jsonText(object, 2));
}
