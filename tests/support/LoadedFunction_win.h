#pragma once

#include <windows.h>

// A function of a library that is loaded already, by a pointer of this type; null if it has none.
template <typename Function> Function loadedFunction(const wchar_t *library, const char *name)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(library), name)));
}
