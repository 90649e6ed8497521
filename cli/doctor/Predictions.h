#ifndef SFTPCLIENT_CLI_DOCTOR_PREDICTIONS_H
#define SFTPCLIENT_CLI_DOCTOR_PREDICTIONS_H

#include "doctor/Report.h"

#include <optional>
#include <string>
#include <vector>

namespace doctor {

/// What to do about whatever the user's own interruption left unknown.
constexpr char kRunAgain[] = "Run doctor again.";

enum class Outlook
{
    Works,
    Fails,
    Unknown
};

/// What an operation will do, and why.
struct Expectation
{
    Outlook outlook = Outlook::Unknown;
    std::optional<int> code; ///< the operation's result, where it can be told: libcurl's code, or -1
    std::string reason;      ///< empty where there is nothing to say
    std::string remedy;      ///< what to change, one sentence; of something that works, what to beware of
};

/// What one operation of the libraries will do, and why: of `SFtpClient`, and of `SFtpSession`.
struct Prediction : Expectation
{
    std::string operation; ///< "download", "upload", "rename", "delete", "list" or "test"
    Expectation session;
};

/// Predicts the six operations from the facts alone. What only writing would show, above all whether the user may
/// write in the directory, is taken to be well unless a round trip was made.
std::vector<Prediction> predict(const Report& report);

/// libcurl's code for an operation that ends like this result, or that could not even be tried.
int codeOf(const Report& report, const ProbeResult& result);

/// The libraries tell a refused directory as a missing file.
int asReported(int code);

/// Whether the server knows the command that it answered so: it has looked for the file and found none.
bool hasLookedForFile(const Reply& reply);

/// What the server said when it was asked for the size of a file that is not there; null if it was not asked.
const Reply* sizeReply(const Report& report);

/// Whether libcurl can lose the end of an upload over TLS 1.3 without an error: it does not wait for the server.
bool canLoseUploads(const Report& report);

/// Of `SFtpClient`'s operations: 0 when all will work, 1 when one will fail, 3 when none will fail but one is unknown.
int exitStatusOf(const std::vector<Prediction>& predictions);

/// What this operation of `SFtpSession`, with its default options and the known host keys that the report has, will do.
Expectation predictForSession(const Report& report, const std::string& operation);

/// Puts what the round trips have shown in the place of what was predicted.
void applyTrips(const Report& report, std::vector<Prediction>& predictions);

} // namespace doctor

#endif
