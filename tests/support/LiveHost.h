#ifndef SUPPORT_LIVEHOST_H
#define SUPPORT_LIVEHOST_H

#include <string>
#include <vector>

/// Host services for live tests: they keep the records and answer the one question of the configuration.
///
/// Each thread has its own records, kept without a lock: one would impose an order on the threads' accesses that the
/// library does not, and hide races from the thread sanitizer.
namespace live {

void setCertAuthSwitch(int value);

/// The calling thread's records since its last call, "LEVEL FUNCTION: text" each, without the 0 that begins every text.
std::vector<std::string> takeRecords();

/// The same, with the request identifier in front: "IDENTIFIER LEVEL FUNCTION: text".
std::vector<std::string> takeRecordsWithIdentifiers();

} // namespace live

#endif
