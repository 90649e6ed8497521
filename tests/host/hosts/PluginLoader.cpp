#include <dlfcn.h>

#include <cstdio>

// Loads each plugin that is named, and lets the last one write its record.
int main(int argc, char** argv)
{
    void* plugin = nullptr;
    for (int i = 1; i < argc; ++i) {
        plugin = dlopen(argv[i], RTLD_NOW | RTLD_LOCAL);
        if (plugin == nullptr) {
            std::puts(dlerror());
            return 1;
        }
    }
    void* const entry = plugin == nullptr ? nullptr : dlsym(plugin, "writeRecord");
    if (entry == nullptr) {
        std::puts("usage: PROGRAM PLUGIN...");
        return 2;
    }
    reinterpret_cast<void (*)()>(entry)();
    return 0;
}
