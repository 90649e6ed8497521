#ifndef FUZZ_HARNESS_CLIENT_H
#define FUZZ_HARNESS_CLIENT_H

#include <SFtpRequest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// Loads the script into the server, and runs the client with a request to it. No certificate is verified, so that
/// every valid handshake succeeds. Afterwards all connections have ended, and everything that was opened is closed.
void runAgainst(const std::string& script, const std::function<void(const SFtpRequest& request)>& client);

/// The path of a file of 3000 bytes.
const std::string& fileToSend();

#endif
