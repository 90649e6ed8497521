#ifndef FUZZ_HARNESS_CLIENT_H
#define FUZZ_HARNESS_CLIENT_H

#include "harness/Network.h"

#include <SFtpRequest.h>

#include <functional>
#include <string>

/// Runs the client with a request to a server that plays the script. No certificate is verified, so that every valid
/// handshake succeeds. Afterwards everything that was opened is closed.
void runAgainst(const std::string& script,
                const std::function<void(const SFtpRequest& request, Network& network)>& client);

/// The path of a file of 3000 bytes.
const std::string& fileToSend();

/// The server's certificate, as PEM text.
const std::string& serverCertificate();

#endif
