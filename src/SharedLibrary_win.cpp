#include "SharedLibrary.h"

#include <windows.h>

#include <cstring>
#include <string>

namespace {
class SystemLibrary : public SharedLibrary
{
public:
    Handle load(const char *name) override
    {
        const std::wstring file = std::wstring(name, name + std::strlen(name)) + L".dll";
        return LoadLibraryW(file.c_str());
    }

    Symbol symbol(Handle library, const char *name) override
    {
        return reinterpret_cast<Symbol>(GetProcAddress(static_cast<HMODULE>(library), name));
    }

    void free(Handle library) override { FreeLibrary(static_cast<HMODULE>(library)); }
};
}

SharedLibrary &SharedLibrary::system()
{
    static SystemLibrary library;
    return library;
}
