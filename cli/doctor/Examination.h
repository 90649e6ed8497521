#ifndef SFTPCLIENT_CLI_DOCTOR_EXAMINATION_H
#define SFTPCLIENT_CLI_DOCTOR_EXAMINATION_H

#include "doctor/Report.h"

#include <SFtpRequest.h>

#include <chrono>
#include <string>

namespace doctor {

/// What the user asks about.
struct Question
{
    SFtpRequest request;    ///< for a listing of the directory
    std::string commandUrl; ///< the directory's URL for a rename or a delete; empty: the library would take another one
    bool clearLogin = false;
    Proxy proxy;
    std::chrono::milliseconds limit = std::chrono::seconds(20);
};

/// Runs the probes, one after the other. Nothing is changed on the server.
/// REQUIRES: `curl_global_init` was called, and the host services are there.
Report examine(const Question& question);

/// A file name that nobody else has.
std::string uniqueName();

} // namespace doctor

#endif
