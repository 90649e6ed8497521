#include "tree/Checksum.h"

#include "tree/TreeListing.h"

#include <boost/crc.hpp>
#include <curl/curl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kPiece = 1 << 18;

template <typename Take>
void readAll(int descriptor, const IsEnding& isEnding, Take take)
{
    std::vector<char> bytes(kPiece);
    off_t at = 0;
    for (;;) {
        const ssize_t got = pread(descriptor, bytes.data(), bytes.size(), at);
        if (got < 0) {
            throw TreeFailure(CURLE_READ_ERROR, "the local file cannot be read");
        }
        if (isEnding()) {
            throw TreeFailure(CURLE_ABORTED_BY_CALLBACK, "the run ends");
        }
        if (got == 0) {
            return;
        }
        take(bytes.data(), static_cast<std::size_t>(got));
        at += got;
    }
}

std::string crc32Of(int descriptor, const IsEnding& isEnding)
{
    boost::crc_32_type sum;
    readAll(descriptor, isEnding, [&sum](const char* bytes, std::size_t count) { sum.process_bytes(bytes, count); });
    std::array<char, 16> text = {};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%08x", static_cast<unsigned>(sum.checksum())));
    return text.data();
}

std::string sha256Of(int descriptor, const IsEnding& isEnding)
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) {
        throw std::bad_alloc();
    }
    readAll(descriptor, isEnding,
            [&context](const char* bytes, std::size_t count) { EVP_DigestUpdate(context.get(), bytes, count); });
    std::array<unsigned char, EVP_MAX_MD_SIZE> value = {};
    unsigned size = 0;
    EVP_DigestFinal_ex(context.get(), value.data(), &size);
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        std::array<char, 3> digits = {};
        static_cast<void>(std::snprintf(digits.data(), digits.size(), "%02x", value.at(i)));
        text += digits.data();
    }
    return text;
}

} // namespace

std::string checksumOf(int descriptor, ChecksumKind kind, const IsEnding& isEnding)
{
    return kind == ChecksumKind::Crc32 ? crc32Of(descriptor, isEnding) : sha256Of(descriptor, isEnding);
}
