#include <Utf8.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

// A code point encoded as the definition of UTF-8 says, surrogates and numbers that are too large included.
std::string encoded(std::uint32_t number)
{
    const auto tail = [number](unsigned shift) { return static_cast<char>(0x80U | ((number >> shift) & 0x3fU)); };
    if (number < 0x80) {
        return {static_cast<char>(number)};
    }
    if (number < 0x800) {
        return {static_cast<char>(0xc0U | (number >> 6U)), tail(0)};
    }
    if (number < 0x10000) {
        return {static_cast<char>(0xe0U | (number >> 12U)), tail(6), tail(0)};
    }
    return {static_cast<char>(0xf0U | (number >> 18U)), tail(12), tail(6), tail(0)};
}

} // namespace

TEST(Utf8, AcceptsEveryCharacter)
{
    for (std::uint32_t number = 0; number < 0x110000; ++number) {
        const std::string text = encoded(number);
        const bool surrogate = number >= 0xd800 && number <= 0xdfff;
        ASSERT_EQ(surrogate ? 0 : text.size(), utf8Length(text + "x")) << number;
    }
    EXPECT_EQ(0U, utf8Length(encoded(0x110000)));
    EXPECT_EQ(0U, utf8Length(encoded(0x1fffff)));
}

TEST(Utf8, RejectsEveryTruncatedCharacter)
{
    for (const std::uint32_t number : {0x80U, 0x7ffU, 0x800U, 0xffffU, 0x10000U, 0x10ffffU}) {
        std::string text = encoded(number);
        while (text.size() > 1) {
            text.pop_back();
            EXPECT_EQ(0U, utf8Length(text)) << number;
            EXPECT_EQ(0U, utf8Length(text + "x")) << number;
            EXPECT_EQ(0U, utf8Length(text + "\xc3\xbc")) << number;
        }
    }
    EXPECT_EQ(0U, utf8Length(""));
}

TEST(Utf8, RejectsOverlongFormsAndStrayBytes)
{
    for (const char* const text : {"\xc0\x80", "\xc1\xbf", "\xe0\x80\x80", "\xe0\x9f\xbf", "\xf0\x80\x80\x80",
                                   "\xf0\x8f\xbf\xbf", "\x80", "\xbf", "\xf5\x80\x80\x80", "\xfe", "\xff"}) {
        EXPECT_EQ(0U, utf8Length(text));
    }
}

TEST(Utf8, RecognisesControlCharacters)
{
    for (std::uint32_t number = 0; number < 0x200; ++number) {
        const bool control = number < 0x20 || (number >= 0x7f && number <= 0x9f);
        EXPECT_EQ(control, isControl(encoded(number))) << number;
    }
}
