#ifndef SUPPORT_NEXTFUNCTION_H
#define SUPPORT_NEXTFUNCTION_H

#include <dlfcn.h>

/// The function of this name that the program's one stands before: `nextFunction<int(FILE*)>("fclose")`.
template <typename Function>
Function* nextFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

#endif
