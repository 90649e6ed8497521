#ifndef SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H
#define SFTPCLIENT_CLI_DOCTOR_ROUNDTRIP_H

#include "doctor/Examination.h"
#include "doctor/Report.h"

#include <functional>
#include <string>

namespace doctor {

/// What is told of a step: that it begins, and later what came of it.
struct StepNews
{
    Step step;
    bool ended;
    int code;  ///< the library's result
    bool good; ///< for List and Get: the file was there, unchanged
    bool ofSession = false;
};

/// Sends a small file of this name through the library, lists, fetches, renames and deletes it. Each step is told as it
/// begins and ends. Where one fails, those that need it are left out. What libcurl prints by itself is not silenced.
/// With a session, the same again, with a file of its own.
void makeRoundTrip(const Question& question, const std::string& name, bool withSession,
                   const std::function<void(const StepNews&)>& tell);

/// Writes what is told of a step into the facts.
void record(const StepNews& news, RoundTrip& roundTrip);

/// The library's operation that a step tries, as in a prediction.
const char* operationOf(Step step);

/// The name of a session's file.
std::string nameForSession(const std::string& name);

/// The name that the file gets on its way.
std::string renamed(const std::string& name);

} // namespace doctor

#endif
