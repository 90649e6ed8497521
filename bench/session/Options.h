#ifndef BENCH_SESSION_OPTIONS_H
#define BENCH_SESSION_OPTIONS_H

#include <SFtpSession.h>

/// The defaults, but for what the environment says: BENCH_KNOWN_HOSTS names a known_hosts file, and BENCH_UNSYNCED
/// leaves it to the system when downloads reach the disk.
SessionOptions sessionOptions();

#endif
