#ifndef FUZZ_HARNESS_CLIENTCALLS_H
#define FUZZ_HARNESS_CLIENTCALLS_H

#include <SFtpRequest.h>

#include <cstdint>

constexpr unsigned kClientOperations = 6;

/// One call of a client that `ISFtpClient` makes. Returns its result, and -1 if there is no response.
/// REQUIRES: `operation` is less than `kClientOperations`.
int operate(unsigned operation, SFtpRequest request, std::uint32_t timeout);

/// One call of an `SFtpClient`. The first operation, the connection test, has no such call.
/// REQUIRES: `operation` is more than 0, and less than `kClientOperations`.
int operateWithText(unsigned operation, SFtpRequest request);

#endif
