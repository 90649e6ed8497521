#ifndef SFTPCLIENT_CLI_DOCTOR_SESSIONPREDICTIONS_H
#define SFTPCLIENT_CLI_DOCTOR_SESSIONPREDICTIONS_H

#include "doctor/Predictions.h"

namespace doctor {

/// What this operation of `SFtpSession`, with its default options and the fingerprint that the report has, will do.
Expectation predictForSession(const Report& report, const std::string& operation);

} // namespace doctor

#endif
