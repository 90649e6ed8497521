#ifndef SUPPORT_RANDOMBYTES_H
#define SUPPORT_RANDOMBYTES_H

#include <cstddef>
#include <string>

/// Bytes without a pattern in which a lost, doubled or foreign block could hide. The same seed gives the same bytes,
/// and a smaller number their beginning.
std::string randomBytes(std::size_t count, unsigned seed = 0);

#endif
