#include "support/original_function.h"

#include <cstdlib>

#include <windows.h>

void* support::OriginalFunction(const char* name)
{
    const HMODULE sqlite = GetModuleHandleA("libsqlite3.dll");
    void* const function = sqlite == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(sqlite, name));
    if (function == nullptr)
        std::abort();
    return function;
}
