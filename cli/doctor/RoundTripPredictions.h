#ifndef SFTPCLIENT_CLI_DOCTOR_ROUNDTRIPPREDICTIONS_H
#define SFTPCLIENT_CLI_DOCTOR_ROUNDTRIPPREDICTIONS_H

#include "doctor/Predictions.h"

#include <vector>

namespace doctor {

/// Puts what a round trip has shown in the place of what was predicted.
void applyRoundTrip(const RoundTrip& roundTrip, std::vector<Prediction>& predictions);

/// The same for a session's.
void applySessionTrip(const RoundTrip& roundTrip, std::vector<Prediction>& predictions);

} // namespace doctor

#endif
