#ifndef SUPPORT_RANDOMBYTES_H
#define SUPPORT_RANDOMBYTES_H

#include <cstddef>
#include <string>

/// Bytes without a pattern that a lost, doubled or foreign block could hide in. The same seed gives the same bytes, and
/// fewer of them their beginning.
std::string randomBytes(std::size_t count, unsigned seed = 0);

#endif
