#include <dlfcn.h>

#include <cstdio>

// Loads the library at run time, so that nothing on its link line asks for the services.
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::puts("usage: host-loads-library LIBRARY");
        return 2;
    }
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::puts(dlerror());
        return 1;
    }
    std::puts("loaded");
    return dlclose(library);
}
