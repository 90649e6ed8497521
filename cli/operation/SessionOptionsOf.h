#ifndef SFTPCLIENT_CLI_OPERATION_SESSIONOPTIONSOF_H
#define SFTPCLIENT_CLI_OPERATION_SESSIONOPTIONSOF_H

#include "base/Arguments.h"

#include <SFtpSession.h>

/// What the command line says about sessions: how far each may be trusted, and how long it may take. Reads the files
/// that it names. What is not said is the session's own default, but for the user's ~/.ssh/known_hosts, which counts
/// where it is there. Throws `UsageError` for what no session can be made of.
SessionOptions sessionOptionsOf(const Arguments& arguments);

/// The file of known hosts among them; empty: none. Throws `UsageError` where it cannot be read.
std::string knownHostsOf(const Arguments& arguments);

/// Throws `UsageError` for options that a session refuses.
SFtpSession sessionWith(const SessionOptions& options);

/// `text` of a session's with the command's words in place of the fields' names: "URL" for "remotePath",
/// "--fingerprint" for "hostKeySha256".
std::string withOptionNames(std::string text);

#endif
