#ifndef SFTPCLIENT_CLI_DOCTOR_CONTROLCONNECTION_H
#define SFTPCLIENT_CLI_DOCTOR_CONTROLCONNECTION_H

#include "doctor/Access.h"
#include "doctor/Report.h"

#include <string>
#include <vector>

namespace doctor {

/// How a visit is made.
struct Errand
{
    std::string url;        ///< of a directory
    bool tlsStep = true;    ///< with the library's TLS step, as all operations but the upload and the size check
    bool namesOnly = false; ///< NLST in place of LIST
    /// Commands that may fail: between the login and the way to the directory, and after its listing.
    std::vector<std::string> afterLogin = {};
    std::vector<std::string> afterListing = {};
};

/// Visits a directory with a libcurl handle that is set as the library sets its own, and lists it. Where the library
/// would trust the server with the password, so does this.
ProbeResult visit(const Access& access, const Errand& errand);

} // namespace doctor

#endif
