// A disk that takes everything and keeps nothing: where SFTPCLIENT_FAILING_SYNC is set, a process finds out by syncfs
// that what it has written is lost. To be preloaded.

#include "NextFunction.h"

#include <cerrno>
#include <cstdlib>

extern "C" __attribute__((visibility("default"))) int syncfs(int descriptor) noexcept
{
    static auto* const next = nextFunction<int(int)>("syncfs");
    if (std::getenv("SFTPCLIENT_FAILING_SYNC") == nullptr) {
        return next(descriptor);
    }
    errno = EIO;
    return -1;
}
