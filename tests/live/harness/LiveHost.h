#ifndef LIVE_HARNESS_LIVEHOST_H
#define LIVE_HARNESS_LIVEHOST_H

#include <string>
#include <vector>

/// Host services for live tests: they keep the records and answer the one question of the configuration.
namespace live {

void setCertAuthSwitch(int value);

/// The records since the last call, "LEVEL FUNCTION: text" each, without the 0 that begins every text.
std::vector<std::string> takeRecords();

} // namespace live

#endif
