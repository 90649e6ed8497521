#ifndef SFTPCLIENT_CLI_DOCTOR_ROUNDTRIPVERDICTS_H
#define SFTPCLIENT_CLI_DOCTOR_ROUNDTRIPVERDICTS_H

#include "doctor/Verdicts.h"

#include <vector>

namespace doctor {

/// Puts what a round trip has shown in the place of what was predicted.
void applyRoundTrip(const RoundTrip& roundTrip, std::vector<Verdict>& verdicts);

} // namespace doctor

#endif
