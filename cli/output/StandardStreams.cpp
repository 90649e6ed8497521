#include "output/StandardStreams.h"

#include "base/ThrowErrno.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace {

int duplicate(int descriptor)
{
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (copy < 0) {
        throwErrno("a standard stream cannot be duplicated");
    }
    return copy;
}

} // namespace

void openStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is the one that was found closed.
        const int mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", mode) < 0) {
            throwErrno("/dev/null cannot be opened");
        }
    }
}

Silenced::Silenced(int descriptor) : m_descriptor(descriptor), m_original(duplicate(descriptor))
{
    static_cast<void>(std::fflush(nullptr));
    const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
    if (!nowhere.isOpen() || dup2(nowhere.get(), m_descriptor) < 0) {
        throwErrno("a standard stream cannot be pointed to /dev/null");
    }
}

Silenced::~Silenced()
{
    // What C streams still hold belongs to the silence.
    static_cast<void>(std::fflush(nullptr));
    dup2(m_original.get(), m_descriptor);
}
