#ifndef SFTPCLIENT_CLI_DOCTOR_EXAMINATION_H
#define SFTPCLIENT_CLI_DOCTOR_EXAMINATION_H

#include "doctor/Report.h"

#include <SFtpRequest.h>

#include <chrono>
#include <functional>
#include <string>

namespace doctor {

/// What the user asks about.
struct Question
{
    SFtpRequest request;    ///< for a listing of the directory
    std::string commandUrl; ///< the directory's URL for a rename or a delete; empty: the library would take another one
    bool clearLogin = false;
    Proxy proxy;
    std::string fileName;       ///< a name that nobody else has, for a round trip; empty: there is none
    std::string knownHostsFile; ///< for a session with an SSH server: a file of known hosts, only read
    std::string hostKeySha256;  ///< the same: the fingerprint that the host key must have
    std::chrono::milliseconds limit = std::chrono::seconds(20);
    std::function<void(const std::string& probe)> tell = {}; ///< called before each
};

/// Runs the probes, one after the other, each in a process of its own; a signal ends that early. Without a round trip
/// nothing is changed on the server; with one, it is cleaned up after it, whatever happens. REQUIRES: one thread alone
/// forks; `curl_global_init` was called, and the host services are there.
Report examine(const Question& question);

/// A file name that nobody else has.
std::string uniqueName();

} // namespace doctor

#endif
