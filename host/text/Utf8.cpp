#include "Utf8.h"

namespace {

struct Form
{
    std::size_t length;
    unsigned char lowestSecond;
    unsigned char highestSecond;
};

// What may begin with this byte. The limits of the second byte keep out over-long forms, surrogates, and what lies
// beyond U+10FFFF.
Form formOf(unsigned char lead)
{
    if (lead < 0x80) {
        return {1, 0, 0};
    }
    if (lead >= 0xc2 && lead <= 0xdf) {
        return {2, 0x80, 0xbf};
    }
    if (lead >= 0xe0 && lead <= 0xef) {
        return {3, lead == 0xe0 ? static_cast<unsigned char>(0xa0) : static_cast<unsigned char>(0x80),
                lead == 0xed ? static_cast<unsigned char>(0x9f) : static_cast<unsigned char>(0xbf)};
    }
    if (lead >= 0xf0 && lead <= 0xf4) {
        return {4, lead == 0xf0 ? static_cast<unsigned char>(0x90) : static_cast<unsigned char>(0x80),
                lead == 0xf4 ? static_cast<unsigned char>(0x8f) : static_cast<unsigned char>(0xbf)};
    }
    return {0, 0, 0};
}

bool lies(char byte, unsigned char lowest, unsigned char highest)
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= lowest && value <= highest;
}

} // namespace

std::size_t utf8Length(std::string_view text)
{
    const Form form = text.empty() ? Form{0, 0, 0} : formOf(static_cast<unsigned char>(text.front()));
    if (form.length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < form.length; ++i) {
        if (!lies(text[i], i == 1 ? form.lowestSecond : 0x80, i == 1 ? form.highestSecond : 0xbf)) {
            return 0;
        }
    }
    return form.length;
}

bool isControl(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character.front());
    return first < 0x20 || first == 0x7f || (first == 0xc2 && lies(character[1], 0x80, 0x9f));
}
