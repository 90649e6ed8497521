#ifndef SFTPCLIENT_CLI_DOCTOR_RENDERERS_H
#define SFTPCLIENT_CLI_DOCTOR_RENDERERS_H

#include "doctor/Findings.h"
#include "doctor/Predictions.h"

#include <iosfwd>

namespace doctor {

/// For people: a table of findings, a table of predictions, and what to change. All control bytes are escaped.
void renderTable(const Report& report, const std::vector<Prediction>& predictions, bool inColour, std::ostream& out);

/// For machines: one JSON object in ASCII, whose form docs/doctor.md tells. Invalid UTF-8 is replaced by U+FFFD.
void renderJson(const Report& report, const std::vector<Prediction>& predictions, std::ostream& out);

} // namespace doctor

#endif
