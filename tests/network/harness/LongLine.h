#ifndef NETWORK_LONGLINE_H
#define NETWORK_LONGLINE_H

#include "support/Relay.h"

constexpr unsigned kOnePercent = 10;

/// A line whose round trip takes this long, and which loses `lost` of 1,000 segments.
inline Line longLine(std::chrono::milliseconds roundTrip, unsigned lost)
{
    Line line;
    line.delay = roundTrip / 2;
    line.lost = lost;
    return line;
}

#endif
