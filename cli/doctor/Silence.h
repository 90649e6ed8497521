#ifndef SFTPCLIENT_CLI_DOCTOR_SILENCE_H
#define SFTPCLIENT_CLI_DOCTOR_SILENCE_H

#include "doctor/Report.h"

#include <algorithm>

namespace doctor {

/// Whether the server has fallen silent when it was asked for TLS.
inline bool isSilentInTls(const Report& report)
{
    const auto& versions = report.tls.versions;
    return report.tls.auth.ending == Ending::Silent ||
           std::any_of(versions.begin(), versions.end(),
                       [](const TlsVersion& each) { return each.ending == Ending::Silent; });
}

/// Whether the server has fallen silent before a login, or talks without an end: every visit would only wait once more.
inline bool isSilent(const Report& report)
{
    const Ending greeting = report.contact.greeting.ending;
    return greeting == Ending::Silent || greeting == Ending::Garbled || isSilentInTls(report);
}

} // namespace doctor

#endif
