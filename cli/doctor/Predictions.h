#ifndef SFTPCLIENT_CLI_DOCTOR_PREDICTIONS_H
#define SFTPCLIENT_CLI_DOCTOR_PREDICTIONS_H

#include "doctor/Report.h"

#include <optional>
#include <string>
#include <vector>

namespace doctor {

enum class Outlook
{
    Works,
    Fails,
    Unknown
};

/// What one operation of the library will do, and why.
struct Prediction
{
    std::string operation; ///< "download", "upload", "rename", "delete", "list" or "test"
    Outlook outlook = Outlook::Unknown;
    std::optional<int> code; ///< the operation's result, where it can be told: libcurl's code, or -1
    std::string reason;      ///< empty where there is nothing to say
    std::string remedy;      ///< what to change, one sentence; of something that works, what to beware of
};

/// Predicts the six operations from the facts alone. What only writing would show, above all whether the user may
/// write in the directory, is taken to be well unless a round trip was made.
std::vector<Prediction> predict(const Report& report);

/// 0 when all operations will work, 1 when one will fail, 3 when none will fail but one is unknown.
int exitStatusOf(const std::vector<Prediction>& predictions);

} // namespace doctor

#endif
