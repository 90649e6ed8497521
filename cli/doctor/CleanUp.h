#ifndef SFTPCLIENT_CLI_DOCTOR_CLEANUP_H
#define SFTPCLIENT_CLI_DOCTOR_CLEANUP_H

#include "doctor/Examination.h"
#include "doctor/Report.h"

namespace doctor {

/// Removes what a round trip may have left behind, with the protocol's own commands, and looks whether it is gone. The
/// way in is one that the report has seen to work.
void cleanUp(const Question& question, const Report& report, RoundTrip& roundTrip);

} // namespace doctor

#endif
