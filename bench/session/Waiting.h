#ifndef BENCH_SESSION_WAITING_H
#define BENCH_SESSION_WAITING_H

#include "Arguments.h"

/// As many connections as `threads`, all at once: on each a download of the URL's file and an upload beside it. Then
/// they are kept for `calls` seconds, without any call.
int keepConnections(const Arguments& arguments);

/// A download that the server lets stall, for `calls` seconds. 0 where it ended as it ought to.
int waitForStall(const Arguments& arguments);

#endif
