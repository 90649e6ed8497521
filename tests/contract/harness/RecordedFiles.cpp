#include "harness/RecordedFiles.h"

#include "harness/Journal.h"
#include "harness/Memory.h"
#include "harness/ScriptedCurl.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace recorded {

Files& files()
{
    static Files instance;
    return instance;
}

namespace {

template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

FILE* openNoted(const char* path, const char* mode)
{
    const bool starved = memory::unmet("fopen");
    const memory::Pause pause;
    const std::string call = std::string("open ") + path + " " + mode;
    if (starved || files().cannotOpen == path) {
        journal::note(call + " fails");
        errno = starved ? ENOMEM : EACCES;
        return nullptr;
    }
    FILE* stream = next<FILE*(const char*, const char*)>("fopen")(path, mode);
    journal::note(call + (stream == nullptr ? " fails" : ""));
    scripted::curl().names[stream] = "stream";
    return stream;
}

} // namespace
} // namespace recorded

using namespace recorded;

extern "C" FILE* fopen(const char* path, const char* mode)
{
    return memory::watched() ? openNoted(path, mode) : next<FILE*(const char*, const char*)>("fopen")(path, mode);
}

extern "C" int fclose(FILE* stream)
{
    if (memory::watched()) {
        const memory::Pause pause;
        journal::note("close");
        scripted::curl().names.erase(stream);
    }
    return next<int(FILE*)>("fclose")(stream);
}

extern "C" int setvbuf(FILE* stream, char* buffer, int mode, size_t size) noexcept
{
    if (memory::watched()) {
        const memory::Pause pause;
        journal::note(mode == _IONBF ? "unbuffered" : "buffered");
    }
    return next<int(FILE*, char*, int, size_t)>("setvbuf")(stream, buffer, mode, size);
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept
{
    if (memory::watched()) {
        const memory::Pause pause;
        journal::note(files().statFails ? "stat fails" : "stat");
        if (files().statFails) {
            errno = EIO;
            return -1;
        }
    }
    return next<int(int, struct stat*)>("fstat")(descriptor, status);
}
