#ifndef SFTPCLIENT_CLI_DOCTOR_FINDINGS_H
#define SFTPCLIENT_CLI_DOCTOR_FINDINGS_H

#include "doctor/Report.h"

#include <string>
#include <vector>

namespace doctor {

enum class Grade
{
    Ok,
    Warn,
    Fail,
    None ///< not tried, or of no weight
};

/// What one probe saw, in a line.
struct Finding
{
    std::string probe;
    Grade grade = Grade::None;
    std::string seen;
};

/// The report's facts in the order in which they were found out.
std::vector<Finding> findingsOf(const Report& report);

/// What protects the connection: TLS and its certificates, or the SSH server's key.
void addSecurity(const Report& report, std::vector<Finding>& findings);

} // namespace doctor

#endif
