#include "support/RecordedFiles.h"

#include "support/Journal.h"
#include "support/Memory.h"
#include "support/NextFunction.h"
#include "support/ScriptedCurl.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

// The functions with 64 bits for sizes, which our definitions stand for on machines of 32 bits too.
namespace recorded {

Files& files()
{
    static Files instance;
    return instance;
}

namespace {

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
    FILE* stream = nextFunction<FILE*(const char*, const char*)>("fopen64")(path, mode);
    journal::note(call + (stream == nullptr ? " fails" : ""));
    scripted::curl().names[stream] = "stream";
    return stream;
}

} // namespace
} // namespace recorded

using namespace recorded;

extern "C" FILE* fopen(const char* path, const char* mode)
{
    return memory::watched() ? openNoted(path, mode)
                             : nextFunction<FILE*(const char*, const char*)>("fopen64")(path, mode);
}

extern "C" int fclose(FILE* stream)
{
    if (memory::watched()) {
        const memory::Pause pause;
        journal::note("close");
        scripted::curl().names.erase(stream);
    }
    return nextFunction<int(FILE*)>("fclose")(stream);
}

extern "C" int setvbuf(FILE* stream, char* buffer, int mode, size_t size) noexcept
{
    if (memory::watched()) {
        const memory::Pause pause;
        journal::note(mode == _IONBF ? "unbuffered" : "buffered");
    }
    return nextFunction<int(FILE*, char*, int, size_t)>("setvbuf")(stream, buffer, mode, size);
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
    return nextFunction<int(int, struct stat*)>("fstat64")(descriptor, status);
}
