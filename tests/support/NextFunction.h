#ifndef SUPPORT_NEXTFUNCTION_H
#define SUPPORT_NEXTFUNCTION_H

#include <dlfcn.h>

/// The function that this program's function of the same name replaces: `nextFunction<int(FILE*)>("fclose")`.
template <typename Function>
Function* nextFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

#endif
