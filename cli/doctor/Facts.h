#ifndef SFTPCLIENT_CLI_DOCTOR_FACTS_H
#define SFTPCLIENT_CLI_DOCTOR_FACTS_H

#include "doctor/Report.h"

#include <cstdint>
#include <vector>

namespace doctor {

/// What the probes have found out, in bytes for a pipe.
std::vector<std::uint8_t> packFacts(const Report& report);

/// Puts it into a report. Throws `std::exception` where the bytes are not whole.
void unpackFacts(const std::vector<std::uint8_t>& bytes, Report& report);

} // namespace doctor

#endif
