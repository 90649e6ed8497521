#ifndef SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H
#define SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H

#include "doctor/Examination.h"
#include "doctor/Report.h"

#include <functional>
#include <string>

namespace doctor {

enum class Step
{
    Put,
    List,
    Get,
    Rename,
    Remove
};

/// What came of a step: the library's result, and for List and Get whether the file was there, unchanged.
struct StepResult
{
    Step step;
    int code;
    bool good;
};

/// Sends a small file of this name through the library, lists, fetches, renames and deletes it. Each result is told as
/// it comes. Where a step fails, those that need it are left out. What libcurl prints by itself is not silenced.
void makeRoundTrip(const Question& question, const std::string& name,
                   const std::function<void(const StepResult&)>& tell);

/// Writes a step's result into the facts.
void record(const StepResult& result, RoundTrip& roundTrip);

/// The name that the file gets on its way.
std::string renamed(const std::string& name);

} // namespace doctor

#endif
