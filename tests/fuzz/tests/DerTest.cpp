// Where the fuzzed certificates come from.
#include "harness/Der.h"
#include "harness/CertificateMaker.h"

#include <tls/TlsTrust.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);

// libFuzzer's, which is not linked here: removes one byte.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* /*data*/, std::size_t size, std::size_t /*most*/)
{
    return size - 1;
}

namespace {

bool isCertificate(const std::string& text)
{
    X509* found = nullptr;
    const bool is = sftpConvToX509(text, found) == SECURITYSS_SUCCESS;
    X509_free(found);
    return is;
}

TEST(CertificateMaker, MakesCertificates)
{
    std::set<std::string> made;
    for (unsigned seed = 0; seed < 200; ++seed) {
        Dice dice(seed);
        const std::string der = makeCertificate(dice);
        EXPECT_TRUE(isCertificate(der)) << seed;
        EXPECT_TRUE(isCertificate(pemOf(der))) << seed;
        EXPECT_EQ(der, derOf(pemOf(der)));
        made.insert(der);
    }
    EXPECT_EQ(200U, made.size());
    EXPECT_EQ("", derOf("none"));
}

TEST(Der, AParsedCertificateGivesItsBytes)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        Dice dice(seed);
        const std::string bytes = makeCertificate(dice);
        const auto values = der::parse(bytes);
        ASSERT_TRUE(values) << seed;
        ASSERT_EQ(1U, values->size());
        EXPECT_EQ(3U, values->front().parts.size()) << "what is signed, how, and the signature";
        EXPECT_EQ(bytes, der::bytesOf(*values));
    }
}

TEST(Der, NoValueIsParsedWhereALengthIsWrong)
{
    EXPECT_TRUE(der::parse(std::string("\x30\x03\x02\x01\x05", 5)));
    for (const char* const wrong :
         {"\x30", "\x30\x01", "\x30\x81", "\x30\x80", "\x1f\x01\x01", "\x02\x84\x01\x01\x01\x01"}) {
        EXPECT_FALSE(der::parse(wrong));
    }
}

TEST(Der, ChangesKeepLengthsRight)
{
    std::set<std::string> made;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        Dice dice(seed);
        auto values = *der::parse(makeCertificate(dice));
        for (int change = 0; change < 3; ++change) {
            der::mutate(values, dice);
        }
        for (der::Value& each : values) { // whose tag may say otherwise by now
            each.tag = 0x30;
        }
        const std::string bytes = der::bytesOf(values);
        const auto again = der::parse(bytes);
        ASSERT_TRUE(again) << seed;
        ASSERT_EQ(values.size(), again->size()) << seed;
        made.insert(bytes);
    }
    EXPECT_LT(990U, made.size());
}

TEST(CertificateMutator, KeepsToTheSizeThatItIsGivenAndMostlyMakesDer)
{
    Dice dice(1);
    const std::string certificate = pemOf(makeCertificate(dice));
    std::size_t parsed = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        std::string input = certificate;
        const std::size_t most = input.size() + (seed % 2 == 0 ? 10 : 3000);
        input.resize(most);
        const std::size_t length =
            LLVMFuzzerCustomMutator(reinterpret_cast<std::uint8_t*>(input.data()), certificate.size(), most, seed);
        ASSERT_GE(most, length) << seed;
        ASSERT_LT(0U, length) << seed;
        input.resize(length);
        if (der::parse(derOf(input))) {
            ++parsed;
        }
    }
    EXPECT_LT(200U, parsed);
}

} // namespace
