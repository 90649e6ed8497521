#ifndef SFTPCLIENT_CLI_DOCTOR_CERTIFICATEDIAGNOSIS_H
#define SFTPCLIENT_CLI_DOCTOR_CERTIFICATEDIAGNOSIS_H

#include "doctor/Diagnosis.h"

namespace doctor {

/// Why a visit did not trust the server's certificate.
Diagnosis diagnoseCertificate(const Report& report, const ProbeResult& visit, bool bare);

/// Why a session does not trust it.
Diagnosis diagnoseGivenTrust(const Report& report);

/// Why the certificates to trust cannot be used.
Diagnosis diagnoseCaFile(const Report& report, bool bare);

} // namespace doctor

#endif
