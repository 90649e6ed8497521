#include "request/Digest.h"

#include <cstddef>
#include <new>

namespace session {

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

} // namespace session
