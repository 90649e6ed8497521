#ifndef FUZZ_HARNESS_CERTIFICATEMAKER_H
#define FUZZ_HARNESS_CERTIFICATEMAKER_H

#include "harness/Dice.h"

#include <string>

/// A certificate as DER, well formed and signed: names, times, serial number, extensions and keys of all kinds.
std::string makeCertificate(Dice& dice);

/// DER as the text of a PEM certificate.
std::string pemOf(const std::string& der);

/// The bytes in the first block of PEM; empty if there is none.
std::string derOf(const std::string& pem);

#endif
