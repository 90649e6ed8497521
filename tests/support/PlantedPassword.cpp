#include "support/PlantedPassword.h"

#include <EscapeControlBytes.h>
#include <JsonText.h>
#include <base/PercentCode.h>
#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include <cctype>
#include <ostream>

namespace {

std::string lowerCase(const std::string& percentCoded)
{
    std::string lower = percentCoded;
    for (std::string::size_type i = 0; i + 2 < lower.size(); ++i) {
        if (lower[i] == '%') {
            lower[i + 1] = static_cast<char>(std::tolower(lower[i + 1]));
            lower[i + 2] = static_cast<char>(std::tolower(lower[i + 2]));
        }
    }
    return lower;
}

std::string base64(const std::string& text)
{
    std::string encoded(4 * ((text.size() + 2) / 3) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                    reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    encoded.pop_back();
    return encoded;
}

std::string behindBackslashes(const std::string& text, bool all)
{
    std::string escaped;
    for (const char character : text) {
        const bool beginsCharacter = (static_cast<unsigned char>(character) & 0xc0U) != 0x80U;
        if ((all && beginsCharacter) || character == '"' || character == '\\') {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

std::string forJson(const std::string& text)
{
    const std::string quoted = jsonText(text);
    return quoted.substr(1, quoted.size() - 2);
}

} // namespace

std::string marked(const std::string& form) { return "<<" + form + ">>"; }

std::string asFault(const std::string& text)
{
    std::string doubled;
    for (const char character : text) {
        doubled.append(character == '\\' ? 2 : 1, character);
    }
    return doubled;
}

std::vector<std::string> PlantedPassword::forms(const std::string& user) const
{
    const std::string coded = percentEncoded(password);
    return {password,
            coded,
            lowerCase(coded),
            behindBackslashes(password, false),
            behindBackslashes(password, true),
            base64(user + ":" + password)};
}

std::string PlantedPassword::text(const std::string& user) const
{
    std::string all;
    for (const std::string& form : forms(user)) {
        all += (all.empty() ? "" : " ") + marked(form);
    }
    return all;
}

std::string PlantedPassword::shownIn(const std::string& output, const std::string& user) const
{
    for (const std::string& form : forms(user)) {
        const std::string plain = marked(form);
        for (const std::string& shown : {plain, escapeControlBytes(plain), forJson(plain)}) {
            if (output.find(shown) != std::string::npos) {
                return shown;
            }
        }
    }
    return {};
}

const std::vector<PlantedPassword>& everyPassword()
{
    static const std::vector<PlantedPassword> all = {
        {"Ordinary", "like-Nothing.else"},
        {"CodeOfTheGreeting", "220"},
        {"TwoAsInCodes", "2"},
        {"ZeroAsInCodes", "0"},
        {"OneLetter", "e"},
        {"PercentSign", "%"},
        {"ReservedCharacters", "%:/@?#&=+%41"},
        {"Quotes", "\"'\"\""},
        {"Backslashes", "\\\\x41\\"},
        {"Blanks", " two  words "},
        {"Utf8", "p\xc3\xa4\xe2\x82\xac"},
        {"CommandUser", "USER"},
        {"CommandPass", "PASS"},
        {"WordOfLibcurl", "Login"},
        {"OneStar", "*"},
        {"TheMask", "****"},
    };
    return all;
}

void PrintTo(const PlantedPassword& planted, std::ostream* stream) { *stream << planted.id; }
