#include "support/original_function.h"

#include <cstdlib>

#include <dlfcn.h>

void* support::OriginalFunction(const char* name)
{
    void* const function = dlsym(RTLD_NEXT, name);
    if (function == nullptr)
        std::abort();
    return function;
}
