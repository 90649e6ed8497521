#include "output/PasswordMask.h"

#include "base/WipedAtEnd.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <vector>

namespace {

// Whether `digits` are two hexadecimal ones that mean `byte`.
bool mean(std::string_view digits, char byte)
{
    unsigned value = 0;
    const std::from_chars_result read = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return digits.size() == 2 && read.ec == std::errc() && read.ptr == digits.data() + digits.size() &&
           value == static_cast<unsigned char>(byte);
}

// Whether the first `length` bytes of `text` are `byte` in the form that is so long.
bool is(char byte, std::string_view text, std::size_t length)
{
    if (text.size() < length) {
        return false;
    }
    switch (length) {
    case 1:
        return text.front() == byte;
    case 2:
        return text.front() == '\\' && text[1] == byte;
    case 3:
        return text.front() == '%' && mean(text.substr(1, 2), byte);
    default:
        return text.substr(0, 2) == "\\x" && mean(text.substr(2, 2), byte);
    }
}

// For each place in `text`, how long all of `secret` is there, or 0. Two backslashes may be one, escaped, or the two
// that the secret has: of all ways to read the text, the longest counts. From the end to the beginning: the effort
// grows with the lengths alone, whatever the text.
std::vector<std::size_t> lengthsOf(std::string_view secret, std::string_view text)
{
    constexpr std::size_t kLongestForm = 4;
    constexpr std::size_t kNone = std::string_view::npos;
    std::vector<std::size_t> lengths(text.size(), 0);
    // By the distance from the place, how long each rest of the secret is there.
    std::array<std::vector<std::size_t>, kLongestForm + 1> rests;
    rests.fill(std::vector<std::size_t>(secret.size() + 1, kNone));
    rests[0].back() = 0;
    for (std::size_t at = text.size(); at-- > 0;) {
        std::rotate(rests.begin(), rests.end() - 1, rests.end());
        rests[0].assign(secret.size() + 1, kNone);
        rests[0].back() = 0;
        for (std::size_t begin = 0; begin < secret.size(); ++begin) {
            for (std::size_t form = 1; form < rests.size(); ++form) {
                const std::size_t rest = rests[form][begin + 1];
                if (rest != kNone && is(secret[begin], text.substr(at), form)) {
                    const std::size_t known = rests[0][begin] == kNone ? 0 : rests[0][begin];
                    rests[0][begin] = std::max(known, form + rest);
                }
            }
        }
        lengths[at] = rests[0].front() == kNone ? 0 : rests[0].front();
    }
    return lengths;
}

// The mask shares no byte with the secret's forms, so that none is put together from it and what stands around it.
// Without one, nothing is shown where the secret is.
std::string hidden(const std::string& text, std::string_view secret, const std::string& mask)
{
    if (secret.empty()) {
        return text;
    }
    const std::vector<std::size_t> lengths = lengthsOf(secret, text);
    const bool isThere = std::any_of(lengths.begin(), lengths.end(), [](std::size_t each) { return each > 0; });
    if (isThere && mask.empty()) {
        return {};
    }
    std::string shown;
    for (std::size_t at = 0; at < text.size(); at += std::max<std::size_t>(lengths[at], 1)) {
        if (lengths[at] > 0) {
            shown += mask;
        } else {
            shown += text[at];
        }
    }
    return shown;
}

// Without the padding, which not everybody writes.
std::string base64Of(const std::string& text)
{
    std::string encoded(4 * (text.size() / 3 + 1) + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                    reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    encoded.resize(encoded.find_last_not_of(std::string_view("=\0", 2)) + 1);
    return encoded;
}

// The first sign that the password does not have, and none that its forms have; nothing where it has them all.
std::string maskFor(const std::string& password)
{
    constexpr std::string_view kSigns = "*#.-_~^!?$&@,;:|<>()[]{}'`";
    const auto* const sign = std::find_if(kSigns.begin(), kSigns.end(),
                                          [&password](char each) { return password.find(each) == std::string::npos; });
    constexpr std::size_t kLength = 4;
    return sign == kSigns.end() ? std::string() : std::string(kLength, *sign);
}

} // namespace

PasswordMask::PasswordMask(const std::string& user, const std::string& password)
    : m_password(password), m_mask(maskFor(password))
{
    if (!password.empty()) {
        std::string login;
        const WipedAtEnd wiped(login);
        login.reserve(user.size() + 1 + password.size());
        login.append(user).append(1, ':').append(password);
        m_base64 = base64Of(login);
    }
}

PasswordMask::~PasswordMask()
{
    const WipedAtEnd password(m_password);
    const WipedAtEnd base64(m_base64);
}

std::string PasswordMask::hiddenIn(std::string text) const
{
    const WipedAtEnd wiped(text);
    return hidden(hidden(text, m_base64, m_mask), m_password, m_mask);
}
