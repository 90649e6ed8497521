#include "output/PasswordMask.h"

#include "credentials/Password.h"

#include <openssl/evp.h>

#include <algorithm>
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

// How long all of `secret` is at the beginning of `text`, or 0. Two backslashes may be one, escaped, or the two that
// the secret has: all ways to read the text are followed.
std::size_t lengthOf(std::string_view secret, std::string_view text)
{
    constexpr std::size_t kForms[] = {1, 2, 3, 4};
    std::vector<std::size_t> ends = {0};
    for (const char byte : secret) {
        std::vector<std::size_t> further;
        for (const std::size_t end : ends) {
            for (const std::size_t form : kForms) {
                const bool isNew = std::find(further.begin(), further.end(), end + form) == further.end();
                if (isNew && is(byte, text.substr(end), form)) {
                    further.push_back(end + form);
                }
            }
        }
        if (further.empty()) {
            return 0;
        }
        ends.swap(further);
    }
    return *std::max_element(ends.begin(), ends.end());
}

// Also where hiding one puts together another.
void hide(std::string& text, std::string_view secret, const char* mask)
{
    for (bool found = !secret.empty(); found;) {
        found = false;
        for (std::size_t at = 0; at < text.size(); ++at) {
            const std::size_t length = lengthOf(secret, std::string_view(text).substr(at));
            if (length > 0) {
                text.replace(at, length, mask);
                at += std::string_view(mask).size() - 1;
                found = true;
            }
        }
    }
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

// The mask must not be what it hides.
const char* maskFor(const std::string& password)
{
    return password.find_first_not_of('*') == std::string::npos ? "[hidden]" : "****";
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
    hide(text, m_base64, m_mask);
    hide(text, m_password, m_mask);
    return text;
}
