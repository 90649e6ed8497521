#ifndef FUZZ_HARNESS_OWNPORTS_H
#define FUZZ_HARNESS_OWNPORTS_H

#include <cstdint>

/// Lets this program connect to these two ports of 127.0.0.1 and nowhere else: the fuzzer writes the replies that tell
/// libcurl where to connect. Counts the connections that stand, and lets the caller go on once one does.
void allowPortsOnly(std::uint16_t control, std::uint16_t data);

/// How many connections stood so far.
unsigned ownConnections();

#endif
