#ifndef FUZZ_HARNESS_SESSIONCALLS_H
#define FUZZ_HARNESS_SESSIONCALLS_H

#include <SFtpSession.h>

#include <string>

constexpr unsigned kSessionOperations = 15;

/// One call of the session with the request; what it gives back is checked. Returns its result.
/// REQUIRES: `operation` is less than `kSessionOperations`.
int operate(unsigned operation, SFtpSession& session, SFtpRequest request, std::string& errorText);

/// Makes the folder that downloads go to, empty.
void emptyFolder();

#endif
