#ifndef FUZZ_HARNESS_OWNPORTS_H
#define FUZZ_HARNESS_OWNPORTS_H

#include <cstdint>

/// Lets this program connect to these two ports of 127.0.0.1 and nowhere else: the fuzzer writes the replies that tell
/// libcurl where to connect. Counts the established connections, and returns to the caller once one is.
void allowPortsOnly(std::uint16_t control, std::uint16_t data);

/// How many connections have been established so far.
unsigned ownConnections();

#endif
