// For a daemon that listens by itself to preload: it listens on the socket that it has as its standard input, whose
// port the test knows, instead of one of its own.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int handed = -1;

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void take()
{
    int listens = 0;
    socklen_t size = sizeof listens;
    if (getsockopt(STDIN_FILENO, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) != 0 || listens == 0) {
        return;
    }
    handed = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    fcntl(handed, F_SETFL, fcntl(handed, F_GETFL) & ~O_NONBLOCK);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO); // by a socket there daemons know that inetd has started them
    dup2(nothing, STDOUT_FILENO);
}

} // namespace

extern "C" __attribute__((visibility("default"))) int bind(int socket, const sockaddr* address, socklen_t size) noexcept
{
    return handed >= 0 ? 0 : next<decltype(&bind)>("bind")(socket, address, size);
}

extern "C" __attribute__((visibility("default"))) int listen(int socket, int waiting) noexcept
{
    if (handed < 0) {
        return next<decltype(&listen)>("listen")(socket, waiting);
    }
    const int done = dup2(handed, socket);
    handed = -1;
    return done < 0 ? -1 : 0;
}
