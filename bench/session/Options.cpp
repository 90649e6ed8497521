#include "Options.h"

#include <cstdlib>

SessionOptions sessionOptions()
{
    SessionOptions options;
    if (const char* const hosts = std::getenv("BENCH_KNOWN_HOSTS")) {
        options.knownHostsFile = hosts;
    }
    options.syncDownload = std::getenv("BENCH_UNSYNCED") == nullptr;
    return options;
}
