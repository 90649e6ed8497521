#include "operation/Streams.h"

#include "operation/Interruption.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace {

[[noreturn]] void fail(const std::string& what) { throw StreamFailure(what + ": " + std::strerror(errno)); }

// Unlike read and write, it returns when a signal comes; one that comes just before is noticed a little later.
void waitFor(int descriptor, short event)
{
    constexpr int kLook = 100;
    pollfd wait{descriptor, event, 0};
    while (Interruption::signal() == 0) {
        const int ready = poll(&wait, 1, kLook);
        if (ready > 0) {
            return;
        }
        if (ready < 0 && errno != EINTR) {
            fail("a standard stream cannot be waited for");
        }
    }
    throw StreamFailure("interrupted");
}

} // namespace

bool writeToOutput(const char* bytes, std::size_t size)
{
    while (size > 0) {
        waitFor(STDOUT_FILENO, POLLOUT);
        // As much as a pipe that takes anything takes at once.
        const ssize_t count = write(STDOUT_FILENO, bytes, std::min<std::size_t>(size, PIPE_BUF));
        if (count < 0 && errno == EPIPE) {
            return false;
        }
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            fail("standard output cannot be written");
        }
        bytes += std::max<ssize_t>(count, 0);
        size -= static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return true;
}

bool isOutputClosed()
{
    pollfd look{STDOUT_FILENO, POLLOUT, 0};
    return poll(&look, 1, 0) > 0 && (static_cast<unsigned>(look.revents) & POLLERR) != 0;
}

std::size_t readFromInput(char* bytes, std::size_t size)
{
    for (;;) {
        waitFor(STDIN_FILENO, POLLIN);
        const ssize_t count = read(STDIN_FILENO, bytes, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR && errno != EAGAIN) {
            fail("standard input cannot be read");
        }
    }
}
