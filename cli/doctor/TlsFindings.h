#ifndef SFTPCLIENT_CLI_DOCTOR_TLSFINDINGS_H
#define SFTPCLIENT_CLI_DOCTOR_TLSFINDINGS_H

#include "doctor/Findings.h"

namespace doctor {

/// What protects the connection: TLS and its certificates, or the SSH server's key.
void addSecurity(const Report& report, std::vector<Finding>& findings);

} // namespace doctor

#endif
