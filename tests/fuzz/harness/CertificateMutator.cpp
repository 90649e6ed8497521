// How libFuzzer makes new inputs of the certificate target: certificates that OpenSSL makes, then values and bytes
// changed.
#include "harness/CertificateMaker.h"
#include "harness/Der.h"

#include <cstdint>
#include <cstring>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(uint8_t* data, std::size_t size, std::size_t most);

namespace {

bool isPem(const std::string& input) { return input.find("-----BEGIN") != std::string::npos; }

std::string changed(const std::string& input, Dice& dice)
{
    const bool wasPem = isPem(input) && !derOf(input).empty();
    std::string der = wasPem ? derOf(input) : input;
    auto values = der::parse(der);
    if (!values || dice.onceIn(10)) {
        der = makeCertificate(dice);
        values = der::parse(der);
    }
    for (std::size_t left = dice.below(4); values && left > 0; --left) {
        der::mutate(*values, dice);
        der = der::bytesOf(*values);
    }
    const std::string made = wasPem != dice.onceIn(8) ? pemOf(der) : der;
    return wasPem && dice.onceIn(8) ? (dice.onceIn(2) ? made + input : "text\n" + made) : made;
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(uint8_t* data, std::size_t size, std::size_t most, unsigned seed)
{
    Dice dice(seed);
    if (!dice.onceIn(4)) {
        const std::string made = changed(std::string(reinterpret_cast<const char*>(data), size), dice);
        if (made.size() <= most && !made.empty()) {
            std::memcpy(data, made.data(), made.size());
            return made.size();
        }
    }
    return LLVMFuzzerMutate(data, size, most);
}
