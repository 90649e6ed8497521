#ifndef SFTPCLIENT_CLI_DOCTOR_WRITETRIAL_H
#define SFTPCLIENT_CLI_DOCTOR_WRITETRIAL_H

#include "doctor/Examination.h"
#include "doctor/Report.h"

namespace doctor {

/// Makes a round trip where the report says that a login works, cleans up after it, and adds to the report what came
/// of it. The library works in a process of its own, so that neither a server that hangs nor a signal can keep this
/// one from cleaning up. Returns the signal that ended the trial early, for the caller to obey, or 0.
/// REQUIRES: one thread alone.
int tryWriting(const Question& question, Report& report);

} // namespace doctor

#endif
