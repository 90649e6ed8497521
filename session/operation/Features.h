#ifndef SFTPCLIENT_SESSION_FEATURES_H
#define SFTPCLIENT_SESSION_FEATURES_H

#include "operation/Operations.h"

#include <string>
#include <vector>

namespace session {

/// What the server says about itself; it is asked on the way to this directory, unless it has been.
const Features& featuresOf(const Work& work, const std::string& directoryUrl);

/// Commands to the server in a directory, without a data connection; what the server said is in the connection.
void visitDirectory(const Work& work, const std::string& directoryUrl, const std::vector<std::string>& commands);

} // namespace session

#endif
