#include "request/Digest.h"

#include <array>
#include <cstddef>
#include <new>

namespace session {

namespace {

constexpr char kName[] = "SHA256:";

} // namespace

Digest::Digest() : m_context(EVP_MD_CTX_new(), EVP_MD_CTX_free)
{
    if (!m_context || EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) != 1) {
        throw std::bad_alloc();
    }
}

void Digest::add(std::string_view text)
{
    const std::size_t size = text.size();
    EVP_DigestUpdate(m_context.get(), &size, sizeof size);
    EVP_DigestUpdate(m_context.get(), text.data(), text.size());
}

std::string Digest::value()
{
    std::string value(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    if (EVP_DigestFinal_ex(m_context.get(), reinterpret_cast<unsigned char*>(value.data()), &size) != 1) {
        throw std::bad_alloc();
    }
    value.resize(size);
    return value;
}

std::string fingerprintOf(std::string_view key)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest = {};
    unsigned int size = 0;
    EVP_Digest(key.data(), key.size(), digest.data(), &size, EVP_sha256(), nullptr);
    std::array<unsigned char, 4 * (EVP_MAX_MD_SIZE / 3 + 1) + 1> text = {};
    const int written = EVP_EncodeBlock(text.data(), digest.data(), static_cast<int>(size));
    return withFingerprintName(
        std::string(reinterpret_cast<const char*>(text.data()), static_cast<std::size_t>(written)));
}

std::string withFingerprintName(const std::string& fingerprint)
{
    const std::string named = fingerprint.compare(0, sizeof kName - 1, kName) == 0 ? fingerprint : kName + fingerprint;
    return named.substr(0, named.find_last_not_of('=') + 1);
}

} // namespace session
