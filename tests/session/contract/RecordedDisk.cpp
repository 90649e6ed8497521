#include "RecordedDisk.h"

#include "support/Journal.h"
#include "support/Memory.h"
#include "support/NextFunction.h"

#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace recorded {

Disk& disk()
{
    static Disk instance;
    return instance;
}

namespace {

bool fails(const std::string& call)
{
    const auto found = disk().failing.find(call);
    if (found == disk().failing.end()) {
        return false;
    }
    errno = found->second;
    return true;
}

bool isInterrupted()
{
    if (disk().interruptions == 0) {
        return false;
    }
    --disk().interruptions;
    errno = EINTR;
    return true;
}

// The name alone, and without the number of this process.
std::string nameIn(const char* path)
{
    std::string name = path;
    name.erase(0, name.rfind('/') + 1);
    const std::string process = "." + std::to_string(getpid()) + ".";
    const std::string::size_type at = name.find(process);
    return at == std::string::npos ? name : name.replace(at, process.size(), ".PROCESS.");
}

int noted(const std::string& call)
{
    const bool failed = fails(call.substr(0, call.find(' ')));
    const int error = errno;
    journal::note(call + (failed ? " fails" : ""));
    errno = error;
    return failed ? -1 : 0;
}

} // namespace
} // namespace recorded

using namespace recorded;

extern "C" int fsync(int descriptor)
{
    if (!memory::watched()) {
        return 0;
    }
    const memory::Pause pause;
    disk().synced = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
    return noted("fsync");
}

extern "C" int close(int descriptor)
{
    static auto* const next = nextFunction<int(int)>("close");
    if (!memory::watched()) {
        return next(descriptor);
    }
    const memory::Pause pause;
    struct stat status = {};
    const bool isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const int result = next(descriptor);
    return isFile && fails("close") ? -1 : result;
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    static auto* const next = nextFunction<int(const char*, const char*)>("rename");
    if (!memory::watched()) {
        return next(from, to);
    }
    const memory::Pause pause;
    return noted("rename " + nameIn(from) + " " + nameIn(to)) == 0 ? next(from, to) : -1;
}

extern "C" int unlink(const char* path) noexcept
{
    static auto* const next = nextFunction<int(const char*)>("unlink");
    if (!memory::watched()) {
        return next(path);
    }
    const memory::Pause pause;
    return noted("unlink " + nameIn(path)) == 0 ? next(path) : -1;
}

// Both are called by the kit's server as well, out of the watch: what it calls is the session's sink and source.
extern "C" ssize_t write(int descriptor, const void* bytes, size_t count)
{
    static auto* const next = nextFunction<ssize_t(int, const void*, size_t)>("write");
    const memory::Pause pause;
    if (isInterrupted() || fails("write")) {
        return -1;
    }
    return next(descriptor, bytes, disk().mostAtOnce == 0 ? count : std::min(count, disk().mostAtOnce));
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t offset)
{
    static auto* const next = nextFunction<ssize_t(int, const void*, size_t, off_t)>("pwrite64");
    const memory::Pause pause;
    if (isInterrupted() || fails("write")) {
        return -1;
    }
    return next(descriptor, bytes, disk().mostAtOnce == 0 ? count : std::min(count, disk().mostAtOnce), offset);
}

extern "C" ssize_t read(int descriptor, void* bytes, size_t count)
{
    static auto* const next = nextFunction<ssize_t(int, void*, size_t)>("read");
    const memory::Pause pause;
    return isInterrupted() || fails("read") ? -1 : next(descriptor, bytes, count);
}

extern "C" int eventfd(unsigned count, int flags) noexcept
{
    static auto* const next = nextFunction<int(unsigned, int)>("eventfd");
    const memory::Pause pause;
    return fails("eventfd") ? -1 : next(count, flags);
}
